#include "platform/cuda/emulation/streams.h"

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/settings.h"

namespace emulated {
namespace {

constexpr uint64_t everything = ~uint64_t(0);

std::vector<std::unique_ptr<Stream>>& streams() {
    static auto* all = new std::vector<std::unique_ptr<Stream>>;
    return *all;
}

Stream& made(int device, bool legacyDefault, bool blocking) {
    streams().push_back(
        std::unique_ptr<Stream>(new Stream{device, legacyDefault, blocking, 0, {}}));
    return *streams().back();
}

bool orderedByDefault(const Stream& a, const Stream& b) {
    return a.device == b.device && a.blocking && b.blocking && (a.legacyDefault || b.legacyDefault);
}

// As a GPU would that has come so far meanwhile.
void completeSome() {
    auto& engine = randomEngine();
    if (engine() % 4 != 0) return;
    Stream& stream = *streams()[engine() % streams().size()];
    if (stream.queue.empty()) return;
    completeUntil(stream, stream.queue[engine() % stream.queue.size()].number);
}

}  // namespace

Stream& defaultStream(int device) {
    static auto* byDevice = new std::map<int, Stream*>;
    Stream*& stream = (*byDevice)[device];
    if (!stream) stream = &made(device, true, true);
    return *stream;
}

bool lives(const Stream* stream) {
    return std::any_of(streams().begin(), streams().end(),
                       [&](const auto& s) { return s.get() == stream; });
}

Stream* streamOf(cudaStream_t stream) {
    if (!stream || stream == cudaStreamLegacy) return &defaultStream(currentDevice());
    auto* own = reinterpret_cast<Stream*>(stream);
    if (lives(own)) return own;
    found(Kind::stream, "a stream that does not exist");
    return nullptr;
}

uint64_t submit(Stream& stream, std::function<void()> work, Stream* after, uint64_t afterNumber) {
    static uint64_t last = 0;
    if (stream.device != currentDevice())
        found(Kind::device, "work on device %d for a stream of device %d", currentDevice(),
              stream.device);
    stream.queue.push_back({++last, std::move(work), after, afterNumber});
    const uint64_t number = last;
    if (settings().schedule == Schedule::early) completeUntil(stream, number);
    if (settings().schedule == Schedule::random) completeSome();
    return number;
}

void completeUntil(Stream& stream, uint64_t number) {
    while (!stream.queue.empty() && stream.queue.front().number <= number) {
        const Operation& front = stream.queue.front();
        const uint64_t first = front.number;
        if (front.after && lives(front.after)) completeUntil(*front.after, front.afterNumber);
        for (std::size_t i = 0; i < streams().size(); ++i) {
            Stream& other = *streams()[i];
            if (&other != &stream && orderedByDefault(stream, other)) completeUntil(other, first);
        }
        // What this waited for may have waited for this.
        if (stream.queue.empty() || stream.queue.front().number != first) continue;
        const Operation next = std::move(stream.queue.front());
        stream.queue.pop_front();
        if (stickyError()) continue;
        const DeviceOfWork here(stream.device);
        next.work();
    }
}

void complete(Stream& stream) {
    if (!stream.legacyDefault) return completeUntil(stream, everything);
    for (std::size_t i = 0; i < streams().size(); ++i)
        if (&stream == streams()[i].get() || orderedByDefault(stream, *streams()[i]))
            completeUntil(*streams()[i], everything);
}

void completeDevice(int device) {
    std::vector<Stream*> all;
    for (const auto& s : streams())
        if (s->device == device) all.push_back(s.get());
    if (settings().schedule == Schedule::random)
        std::shuffle(all.begin(), all.end(), randomEngine());
    for (Stream* s : all) completeUntil(*s, everything);
}

}  // namespace emulated

using namespace emulated;

extern "C" {

cudaError_t cudaStreamCreateWithFlags(cudaStream_t* stream, unsigned flags) {
    const Call call;
    if (stickyError()) return result(0);
    count("stream");
    *stream = reinterpret_cast<cudaStream_t>(
        &made(currentDevice(), false, !(flags & cudaStreamNonBlocking)));
    return result(0);
}

cudaError_t cudaStreamCreate(cudaStream_t* stream) {
    return cudaStreamCreateWithFlags(stream, cudaStreamDefault);
}

cudaError_t cudaStreamCreateWithPriority(cudaStream_t* stream, unsigned flags, int priority) {
    const cudaError_t error = cudaStreamCreateWithFlags(stream, flags);
    if (error == cudaSuccess) streamOf(*stream)->priority = priority;
    return error;
}

cudaError_t cudaStreamGetPriority(cudaStream_t stream, int* priority) {
    const Call call;
    const Stream* const s = streamOf(stream);
    if (!s) return result(cudaErrorInvalidResourceHandle);
    *priority = s->priority;
    return result(0);
}

// The call returns at once, and the work is still done. Here it is done now, as it may be.
cudaError_t cudaStreamDestroy(cudaStream_t stream) {
    const Call call;
    Stream* own = stream ? streamOf(stream) : nullptr;
    if (!own) return result(cudaErrorInvalidResourceHandle);
    completeUntil(*own, everything);
    auto& all = streams();
    all.erase(std::find_if(all.begin(), all.end(), [&](const auto& s) { return s.get() == own; }));
    return result(0);
}

cudaError_t cudaStreamSynchronize(cudaStream_t stream) {
    const Call call;
    count("synchronise");
    if (stickyError()) return result(0);
    Stream* own = streamOf(stream);
    if (!own) return result(cudaErrorInvalidResourceHandle);
    if (!settings().dropSynchronise) complete(*own);
    return result(0);
}

cudaError_t cudaStreamQuery(cudaStream_t stream) {
    const Call call;
    Stream* own = streamOf(stream);
    if (!own) return result(cudaErrorInvalidResourceHandle);
    return result(own->queue.empty() ? cudaSuccess : cudaErrorNotReady);
}

cudaError_t cudaDeviceSynchronize() {
    const Call call;
    count("synchronise");
    if (stickyError()) return result(0);
    completeDevice(currentDevice());
    return result(0);
}
}
