// Streams and events. Calls create and destroy them, and a runtime takes long over it: those that
// are given back are kept.
#include <mutex>
#include <vector>

#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"

namespace gpu {
namespace {

template <class Handle>
struct Kept {
    static constexpr std::size_t most = 32;
    std::mutex mutex;
    std::vector<Handle> idle;

    bool take(Handle& handle) {
        std::lock_guard<std::mutex> lock(mutex);
        if (idle.empty()) return false;
        handle = idle.back();
        idle.pop_back();
        return true;
    }
    bool give(Handle handle) {
        std::lock_guard<std::mutex> lock(mutex);
        if (idle.size() == most) return false;
        idle.push_back(handle);
        return true;
    }
};

// None is ever destroyed: calls come at exit, too.
auto& streams() {
    static auto* instance = new Kept<cudaStream_t>;
    return *instance;
}
auto& urgentStreams() {
    static auto* instance = new Kept<cudaStream_t>;
    return *instance;
}
auto& copyStreams() {
    static auto* instance = new Kept<cudaStream_t>;
    return *instance;
}
auto& events() {
    static auto* instance = new Kept<cudaEvent_t>;
    return *instance;
}

cudaStream_t native(platform::Stream stream) {
    return static_cast<cudaStream_t>(stream);
}

constexpr int ordinary = 0, urgent = -1;  // priorities

// Blocking streams: the algorithms rely on the default stream's ordering with all others.
int create(Kept<cudaStream_t>& kept, int priority, platform::Stream* stream) {
    bindContext();
    OnDevice here;
    cudaStream_t made = nullptr;
    const cudaError_t error =
        kept.take(made) ? cudaSuccess
                        : cudaStreamCreateWithPriority(&made, cudaStreamDefault, priority);
    *stream = made;
    return reported(error);
}

}  // namespace

void releaseKeptStreams() {
    cudaStream_t stream;
    while (streams().take(stream) || urgentStreams().take(stream) || copyStreams().take(stream))
        cudaStreamDestroy(stream);
    cudaEvent_t event;
    while (events().take(event)) cudaEventDestroy(event);
    cudaGetLastError();
}

cudaError_t takeCopyStream(cudaStream_t& stream) {
    return copyStreams().take(stream) ? cudaSuccess
                                      : cudaStreamCreateWithFlags(&stream, cudaStreamNonBlocking);
}

void giveCopyStream(cudaStream_t stream) {
    if (!copyStreams().give(stream)) cudaStreamDestroy(stream);
}

int streamCreate(platform::Stream* stream) {
    return create(streams(), ordinary, stream);
}

int urgentStreamCreate(platform::Stream* stream) {
    return create(urgentStreams(), urgent, stream);
}

int streamDestroy(platform::Stream stream) {
    OnDevice here;
    int priority = ordinary;
    cudaStreamGetPriority(native(stream), &priority);
    auto& kept = priority == ordinary ? streams() : urgentStreams();
    return kept.give(native(stream)) ? cudaSuccess : reported(cudaStreamDestroy(native(stream)));
}

int streamSynchronize(platform::Stream stream) {
    OnDevice here;
    return reported(cudaStreamSynchronize(native(stream)));
}

int eventCreate(platform::Event* event) {
    bindContext();
    OnDevice here;
    cudaEvent_t made = nullptr;
    const cudaError_t error =
        events().take(made) ? cudaSuccess : cudaEventCreateWithFlags(&made, cudaEventDisableTiming);
    *event = made;
    return reported(error);
}

int eventDestroy(platform::Event event) {
    OnDevice here;
    const auto given = static_cast<cudaEvent_t>(event);
    return events().give(given) ? cudaSuccess : reported(cudaEventDestroy(given));
}

int eventRecord(platform::Event event, platform::Stream stream) {
    OnDevice here;
    return reported(cudaEventRecord(static_cast<cudaEvent_t>(event), native(stream)));
}

int streamWaitEvent(platform::Stream stream, platform::Event event, unsigned flags) {
    OnDevice here;
    return reported(cudaStreamWaitEvent(native(stream), static_cast<cudaEvent_t>(event), flags));
}

}  // namespace gpu
