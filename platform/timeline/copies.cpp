// Copies: over the bus, from page-locked or from other memory, and within the device. Of their
// contents only what a host reads afterwards is moved.
#include <algorithm>
#include <cstring>

#include "platform/timeline/state.h"

namespace timeline {
namespace {

struct Region {
    void* to;
    std::size_t toPitch;
    const void* from;
    std::size_t fromPitch;
    std::size_t width, height;

    double bytes() const { return double(width) * double(height); }
};

// What is uploaded and may be read again: vectors and lists. A kernel's results are made anew.
constexpr double remembered = 1 << 20;

// Where the host's memory is the device's, so are the operands.
void moveContents(const Region& r, Place to, Place from) {
    const auto onDevice = [](Place place) {
        return place == Place::device || (place == Place::operand && state().joined());
    };
    if (to == Place::elsewhere && onDevice(from))
        deliver(r.to, r.toPitch, r.from, r.fromPitch, r.width, r.height);
    if (onDevice(to) && from == Place::elsewhere && r.height == 1 && r.bytes() <= remembered)
        std::memcpy(r.to, r.from, r.width);
}

// Of memory that is not page-locked: by the runtime, or if it is much by several threads.
double pageableSeconds(const Machine& m, double bytes) {
    const double rate =
        bytes < m.stagedFrom ? m.pageable : std::min(m.locked, m.pageable * m.stagedThreads);
    return m.pageableStart + bytes / rate;
}

int copy(const Region& r, bool asynchronous, platform::Stream stream) {
    const Entry entry;
    State& s = state();
    const Machine& m = s.machine;
    if (s.streams.find(stream) == s.streams.end() && stream)
        return reported(cudaErrorInvalidResourceHandle);
    if (r.bytes() > 0 && (!r.to || !r.from)) return reported(cudaErrorInvalidValue);
    const Place to = s.memory.placeOf(r.to), from = s.memory.placeOf(r.from);
    const bool up = to == Place::device, down = from == Place::device;
    ++s.counts.copies;
    s.clock.host(Kind::call, m.copy);
    if (r.bytes() > 0) moveContents(r, to, from);
    Reached done;
    if (up == down) {  // within the device, or within the host
        const double seconds = m.kernelStart + 2 * r.bytes() / m.bandwidth.at(2 * r.bytes());
        done = submit(stream, up ? Kind::kernel : Kind::library, {seconds});
    } else {
        (up ? s.counts.bytesUp : s.counts.bytesDown) += r.bytes();
        const bool locked = (up ? from : to) == Place::pageLocked;
        const double seconds =
            locked ? m.lockedStart + r.bytes() / m.locked : pageableSeconds(m, r.bytes());
        done = submitCopy(stream, up ? Clock::upwards : Clock::downwards,
                          up ? Kind::toDevice : Kind::toHost, r.bytes() > 0 ? seconds : 0);
        asynchronous = asynchronous && locked;
    }
    if (!asynchronous) s.clock.wait(done, 0);
    return cudaSuccess;
}

}  // namespace

int memcpy(void* to, const void* from, std::size_t bytes, int /*kind*/) {
    return copy({to, bytes, from, bytes, bytes, 1}, false, nullptr);
}

int memcpyAsync(void* to, const void* from, std::size_t bytes, int /*kind*/,
                platform::Stream stream) {
    return copy({to, bytes, from, bytes, bytes, 1}, true, stream);
}

int memcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
             std::size_t width, std::size_t height, int /*kind*/) {
    return copy({to, toPitch, from, fromPitch, width, height}, false, nullptr);
}

int memcpy2DAsync(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                  std::size_t width, std::size_t height, int /*kind*/, platform::Stream stream) {
    return copy({to, toPitch, from, fromPitch, width, height}, true, stream);
}

int memset(void* pointer, int /*value*/, std::size_t bytes) {
    const Entry entry;
    State& s = state();
    if (bytes && !pointer) return reported(cudaErrorInvalidValue);
    s.clock.host(Kind::call, s.machine.launch);
    submit(nullptr, Kind::kernel,
           {s.machine.kernelStart + double(bytes) / s.machine.bandwidth.at(double(bytes))});
    return cudaSuccess;
}

}  // namespace timeline
