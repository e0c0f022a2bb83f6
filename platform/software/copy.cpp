// Copies. Strict mode checks both ends, the direction and the pitches of each.
#include <cstring>

#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/pool.h"
#include "platform/software/streams.h"

namespace software {
namespace {

struct Region {
    void* to;
    std::size_t toPitch;
    const void* from;
    std::size_t fromPitch;
    std::size_t width, height;
    int kind;

    bool toDevice() const { return kind & cudaMemcpyHostToDevice; }
    bool fromDevice() const { return kind & cudaMemcpyDeviceToHost; }
};

std::size_t span(std::size_t pitch, const Region& r) {
    return (r.height - 1) * pitch + r.width;
}

// What the runtime would answer to such a copy before it starts.
int check(const Region& r, bool asynchronous, platform::Stream stream) {
    if (r.kind < cudaMemcpyHostToHost || r.kind > cudaMemcpyDeviceToDevice)
        return cudaErrorInvalidMemcpyDirection;
    if (!isStream(stream)) return cudaErrorInvalidResourceHandle;
    if (r.width == 0 || r.height == 0) return cudaSuccess;
    if (r.toPitch < r.width || r.fromPitch < r.width) return cudaErrorInvalidPitchValue;
    if (!r.to || !r.from) return cudaErrorInvalidValue;
    if (schedule() == Schedule::production) return cudaSuccess;

    const bool toDevice = deviceHeap().contains(r.to);
    const bool fromDevice = deviceHeap().contains(r.from);
    if (toDevice != r.toDevice() || fromDevice != r.fromDevice())
        return cudaErrorInvalidMemcpyDirection;
    const Heap& toHeap = toDevice ? deviceHeap() : pageLockedHeap();
    const Heap& fromHeap = fromDevice ? deviceHeap() : pageLockedHeap();
    // Ordinary host memory has no bounds to know, and cannot be copied asynchronously.
    const bool toPageable = !toDevice && !pageLockedHeap().contains(r.to);
    const bool fromPageable = !fromDevice && !pageLockedHeap().contains(r.from);
    if (asynchronous && (toPageable || fromPageable)) return cudaErrorInvalidValue;
    if (!toPageable && !toHeap.address(r.to, span(r.toPitch, r))) return cudaErrorInvalidValue;
    if (!fromPageable && !fromHeap.address(r.from, span(r.fromPitch, r)))
        return cudaErrorInvalidValue;
    return cudaSuccess;
}

// The bytes behind an end of a copy when the copy runs; null if they have been given back since.
void* bytesAt(const void* pointer, bool device, bool asynchronous, std::size_t bytes) {
    if (device) return deviceHeap().address(pointer, bytes);
    if (asynchronous) return pageLockedHeap().address(pointer, bytes);
    return const_cast<void*>(pointer);
}

void copyRows(const Region& r, bool asynchronous) {
    if (r.width == 0 || r.height == 0) return;
    auto* to = static_cast<char*>(bytesAt(r.to, r.toDevice(), asynchronous, span(r.toPitch, r)));
    auto* from = static_cast<const char*>(
        bytesAt(r.from, r.fromDevice(), asynchronous, span(r.fromPitch, r)));
    if (!to || !from) {
        noteViolation("a copy runs after its memory was given back");
        return failAsynchronously(cudaErrorLaunchFailure);
    }
    // One piece of memory is cut into pieces that threads can share, rows are grouped.
    Region flat = r;
    constexpr std::size_t piece = 1 << 18;
    if (r.toPitch == r.width && r.fromPitch == r.width) {
        const std::size_t bytes = r.width * r.height;
        return parallelFor((bytes + piece - 1) / piece, bytes / 4, [&](std::size_t k) {
            std::memcpy(to + k * piece, from + k * piece, std::min(piece, bytes - k * piece));
        });
    }
    const std::size_t rows = std::max<std::size_t>(1, piece / flat.width);
    parallelFor((flat.height + rows - 1) / rows, flat.width * flat.height / 4, [&](std::size_t k) {
        const std::size_t end = std::min(flat.height, (k + 1) * rows);
        for (std::size_t row = k * rows; row < end; ++row)
            std::memcpy(to + row * flat.toPitch, from + row * flat.fromPitch, flat.width);
    });
}

int copyNow(const Region& region) {
    if (int error = check(region, false, nullptr)) return error;
    if (int error = bindContext()) return error;
    drainAll();
    copyRows(region, false);
    return takeAsynchronousError();
}

int copyLater(const Region& region, platform::Stream stream) {
    if (int error = check(region, true, stream)) return error;
    if (int error = bindContext()) return error;
    const bool strict = schedule() != Schedule::production;
    submit(stream, {[region, strict](std::size_t) { copyRows(region, strict); }, 1,
                    region.width * region.height / 4});
    return cudaSuccess;
}

Region flat(void* to, const void* from, std::size_t bytes, int kind) {
    return {to, bytes, from, bytes, bytes, 1, kind};
}

}  // namespace

int memcpy(void* to, const void* from, std::size_t bytes, int kind) {
    return call(
        "cudaMemcpy", [&] { return copyNow(flat(to, from, bytes, kind)); }, to, from, bytes, kind);
}

int memcpyAsync(void* to, const void* from, std::size_t bytes, int kind, platform::Stream stream) {
    return call(
        "cudaMemcpyAsync", [&] { return copyLater(flat(to, from, bytes, kind), stream); }, to, from,
        bytes, kind, stream);
}

int memcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
             std::size_t width, std::size_t height, int kind) {
    const Region region{to, toPitch, from, fromPitch, width, height, kind};
    return call(
        "cudaMemcpy2D", [&] { return copyNow(region); }, to, toPitch, from, fromPitch, width,
        height, kind);
}

int memcpy2DAsync(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                  std::size_t width, std::size_t height, int kind, platform::Stream stream) {
    const Region region{to, toPitch, from, fromPitch, width, height, kind};
    return call(
        "cudaMemcpy2DAsync", [&] { return copyLater(region, stream); }, to, toPitch, from,
        fromPitch, width, height, kind, stream);
}

int memset(void* pointer, int value, std::size_t bytes) {
    auto body = [&] {
        if (bytes == 0) return int(cudaSuccess);
        if (!pointer || !deviceHeap().address(pointer, bytes)) return int(cudaErrorInvalidValue);
        if (int error = bindContext()) return error;
        auto run = [=](std::size_t) {
            if (void* memory = deviceHeap().address(pointer, bytes))
                std::memset(memory, value, bytes);
            else
                failAsynchronously(cudaErrorLaunchFailure);
        };
        submit(nullptr, {run, 1, bytes / 4});
        return int(cudaSuccess);
    };
    return call("cudaMemset", body, pointer, value, bytes);
}

}  // namespace software
