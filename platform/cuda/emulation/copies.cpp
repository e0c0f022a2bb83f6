// Copies: which of them wait, and for what, depends on the memory at either side.
#include <cuda_runtime_api.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/streams.h"

namespace emulated {
namespace {

constexpr std::size_t largestPitch = 2147483647;

// `height` rows of `width` bytes, each `pitch` behind the one before.
struct Rows {
    void* at;
    std::size_t pitch;
};

void move(const Rows& to, const Rows& from, std::size_t width, std::size_t height) {
    for (std::size_t j = 0; j < height; ++j)
        std::memmove(static_cast<char*>(to.at) + j * to.pitch,
                     static_cast<const char*>(from.at) + j * from.pitch, width);
}

// Where the emulation reaches a side of a copy; null at nothing, with a finding if it is not all
// there.
void* reach(const Rows& rows, std::size_t width, std::size_t height, const char* name) {
    const Place place = placeOf(rows.at);
    if (place == Place::pageable) return rows.at;
    const auto a = uint64_t(rows.at);
    const std::size_t extent = rows.pitch * (height - 1) + width;
    Arena& arena = deviceMemory().contains(a) ? deviceMemory() : pageLockedMemory();
    const Allocation* in = arena.find(a);
    if (!in || extent > in->end() - a) {
        found(Kind::copy, "%s: %zu bytes at %p, %s", name, extent, rows.at,
              in ? "which are not all of one allocation" : "where memory was freed");
        return nullptr;
    }
    if (place == Place::device && in->device != currentDevice())
        found(Kind::device, "%s: memory of device %d on device %d", name, in->device,
              currentDevice());
    return arena.reach(a);
}

bool kindFits(cudaMemcpyKind kind, bool fromDevice, bool toDevice) {
    switch (kind) {
        case cudaMemcpyHostToHost:
            return !fromDevice && !toDevice;
        case cudaMemcpyHostToDevice:
            return !fromDevice && toDevice;
        case cudaMemcpyDeviceToHost:
            return fromDevice && !toDevice;
        case cudaMemcpyDeviceToDevice:
            return fromDevice && toDevice;
        default:
            return true;
    }
}

void countCopy(bool asynchronous, Place to, Place from, std::size_t bytes) {
    count("copy");
    count(asynchronous ? "copy asynchronous" : "copy synchronous");
    const bool pageable = to == Place::pageable || from == Place::pageable;
    const bool onDevice = to == Place::device && from == Place::device;
    count(onDevice ? "copy device" : pageable ? "copy pageable" : "copy page-locked");
    count("bytes", static_cast<long long>(bytes));
}

cudaError_t copy(const char* name, Rows to, Rows from, std::size_t width, std::size_t height,
                 cudaMemcpyKind kind, bool asynchronous, cudaStream_t handle) {
    const Call call;
    if (stickyError()) return result(0);
    const bool badPitch = width > to.pitch || width > from.pitch || to.pitch > largestPitch ||
                          from.pitch > largestPitch;
    if (height > 1 && badPitch) {
        found(Kind::copy, "%s: a pitch that CUDA refuses", name);
        return result(cudaErrorInvalidPitchValue);
    }
    if (width == 0 || height == 0) return result(0);
    if (!to.at || !from.at) return result(cudaErrorInvalidValue);
    const Place toPlace = placeOf(to.at), fromPlace = placeOf(from.at);
    const bool toDevice = toPlace == Place::device, fromDevice = fromPlace == Place::device;
    if (!kindFits(kind, fromDevice, toDevice))
        found(Kind::copy, "%s: a kind that is not that of its operands", name);
    to.at = reach(to, width, height, name);
    from.at = reach(from, width, height, name);
    if (!to.at || !from.at) return result(cudaErrorInvalidValue);
    countCopy(asynchronous, toPlace, fromPlace, width * height);
    Stream* stream = streamOf(handle);
    if (!stream) return result(cudaErrorInvalidResourceHandle);
    const bool pageable = toPlace == Place::pageable || fromPlace == Place::pageable;
    const bool onDevice = toDevice && fromDevice;
    auto work = [=] { move(to, from, width, height); };
    if (fromPlace == Place::pageable && toDevice) {
        // The source is staged, and may be changed afterwards; the rest may still be under way.
        complete(*stream);
        if (stickyError()) return result(0);
        auto staged = std::make_shared<std::vector<char>>(width * height);
        move({staged->data(), width}, from, width, height);
        submit(*stream, [=] { move(to, {staged->data(), width}, width, height); });
    } else if (onDevice || (asynchronous && !pageable)) {
        submit(*stream, work);  // the host does not wait
    } else {
        complete(*stream);
        if (!stickyError()) work();
    }
    return result(0);
}

cudaError_t set(void* pointer, int value, std::size_t bytes, cudaStream_t handle) {
    const Call call;
    if (stickyError() || bytes == 0) return result(0);
    count("memset");
    void* there = deviceRange(pointer, bytes, "cudaMemset");
    Stream* stream = streamOf(handle);
    if (!there || !stream) return result(cudaErrorInvalidValue);
    submit(*stream, [=] { std::memset(there, value, bytes); });
    return result(0);
}

Rows rows(const void* pointer, std::size_t pitch) {
    return {const_cast<void*>(pointer), pitch};
}

}  // namespace
}  // namespace emulated

using namespace emulated;

extern "C" {

cudaError_t cudaMemcpy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind) {
    return copy("cudaMemcpy", rows(to, bytes), rows(from, bytes), bytes, 1, kind, false, nullptr);
}
cudaError_t cudaMemcpyAsync(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind,
                            cudaStream_t stream) {
    return copy("cudaMemcpyAsync", rows(to, bytes), rows(from, bytes), bytes, 1, kind, true,
                stream);
}
cudaError_t cudaMemcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                         std::size_t width, std::size_t height, cudaMemcpyKind kind) {
    return copy("cudaMemcpy2D", rows(to, toPitch), rows(from, fromPitch), width, height, kind,
                false, nullptr);
}
cudaError_t cudaMemcpy2DAsync(void* to, std::size_t toPitch, const void* from,
                              std::size_t fromPitch, std::size_t width, std::size_t height,
                              cudaMemcpyKind kind, cudaStream_t stream) {
    return copy("cudaMemcpy2DAsync", rows(to, toPitch), rows(from, fromPitch), width, height, kind,
                true, stream);
}
cudaError_t cudaMemset(void* pointer, int value, std::size_t bytes) {
    return set(pointer, value, bytes, nullptr);
}
cudaError_t cudaMemsetAsync(void* pointer, int value, std::size_t bytes, cudaStream_t stream) {
    return set(pointer, value, bytes, stream);
}
}
