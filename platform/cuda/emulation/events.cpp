// Events: a place in a stream that others, and the host, can wait for.
#include <set>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/streams.h"

struct CUevent_st {
    emulated::Stream* stream = nullptr;  // null before the first record
    uint64_t number = 0;
};

namespace emulated {
namespace {

std::set<cudaEvent_t>& events() {
    static auto* all = new std::set<cudaEvent_t>;
    return *all;
}

bool known(cudaEvent_t event) {
    if (events().count(event)) return true;
    found(Kind::stream, "an event that does not exist");
    return false;
}

bool reached(const CUevent_st& event) {
    if (!event.stream || !lives(event.stream)) return true;
    const auto& queue = event.stream->queue;
    return queue.empty() || queue.front().number > event.number;
}

}  // namespace
}  // namespace emulated

using namespace emulated;

extern "C" {

cudaError_t cudaEventCreateWithFlags(cudaEvent_t* event, unsigned) {
    const Call call;
    if (stickyError()) return result(0);
    count("event");
    *event = new CUevent_st;
    events().insert(*event);
    return result(0);
}

cudaError_t cudaEventCreate(cudaEvent_t* event) {
    return cudaEventCreateWithFlags(event, cudaEventDefault);
}

cudaError_t cudaEventDestroy(cudaEvent_t event) {
    const Call call;
    if (!known(event)) return result(cudaErrorInvalidResourceHandle);
    events().erase(event);
    delete event;
    return result(0);
}

cudaError_t cudaEventRecord(cudaEvent_t event, cudaStream_t stream) {
    const Call call;
    if (stickyError()) return result(0);
    Stream* own = streamOf(stream);
    if (!own || !known(event)) return result(cudaErrorInvalidResourceHandle);
    event->stream = own;
    event->number = submit(*own, [] {});
    return result(0);
}

// Waits for the record as it is now; for an event that was never recorded there is nothing to wait.
cudaError_t cudaStreamWaitEvent(cudaStream_t stream, cudaEvent_t event, unsigned) {
    const Call call;
    if (stickyError()) return result(0);
    Stream* own = streamOf(stream);
    if (!own || !known(event)) return result(cudaErrorInvalidResourceHandle);
    if (event->stream && event->stream != own) {
        const DeviceOfWork here(own->device);
        submit(
            *own, [] {}, event->stream, event->number);
    }
    return result(0);
}

cudaError_t cudaEventQuery(cudaEvent_t event) {
    const Call call;
    if (!known(event)) return result(cudaErrorInvalidResourceHandle);
    return result(reached(*event) ? cudaSuccess : cudaErrorNotReady);
}

cudaError_t cudaEventSynchronize(cudaEvent_t event) {
    const Call call;
    count("synchronise");
    if (stickyError()) return result(0);
    if (!known(event)) return result(cudaErrorInvalidResourceHandle);
    if (!reached(*event)) completeUntil(*event->stream, event->number);
    return result(0);
}

// Nothing here takes a GPU's time.
cudaError_t cudaEventElapsedTime(float* milliseconds, cudaEvent_t begin, cudaEvent_t end) {
    const Call call;
    if (!known(begin) || !known(end)) return result(cudaErrorInvalidResourceHandle);
    *milliseconds = 0;
    return result(reached(*begin) && reached(*end) ? cudaSuccess : cudaErrorNotReady);
}
}
