// Streams of the library's own, events between them, and the stream that a thread launches on.
#pragma once

#include "cudalib/exceptions.h"

namespace cudalib {

// The stream that this thread's launches and CUBLAS calls go to: the default stream, unless there
// is an OwnStream.
inline thread_local cudaStream_t currentStream = nullptr;

// A point in a stream's work that another stream can wait for. What a destructor here meets shows
// at its caller's next check.
class Event {
  public:
    Event() { checkCudaError(cudaEventCreate(&event_)); }
    ~Event() { cudaEventDestroy(event_); }
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // What `stream` is given from now on waits for what `before` has been given so far. The host
    // does not wait.
    void order(cudaStream_t before, cudaStream_t stream) const {
        checkCudaError(cudaEventRecord(event_, before));
        checkCudaError(cudaStreamWaitEvent(stream, event_, 0));
    }

  private:
    cudaEvent_t event_ = nullptr;
};

// A stream beside the default one, so that copies on other streams go on meanwhile: this thread's
// launches and CUBLAS calls go to it while it lives. To the application it is as the default stream
// is: what it is given waits for all that was issued before it, but on streams that do not wait for
// the default one.
class OwnStream {
  public:
    OwnStream() : OwnStream(Created()) {
        Event().order(outer_, stream_);
        currentStream = stream_;
        checkCublasError(cublasSetKernelStream(stream_));
    }
    // Waits: what it has been given uses memory that may go next.
    ~OwnStream() {
        currentStream = outer_;
        cublasSetKernelStream(outer_);
        cudaStreamSynchronize(stream_);
        cudaStreamDestroy(stream_);
    }
    OwnStream(const OwnStream&) = delete;
    OwnStream& operator=(const OwnStream&) = delete;

    operator cudaStream_t() const { return stream_; }

  private:
    struct Created {};
    explicit OwnStream(Created) { checkCudaError(cudaStreamCreate(&stream_)); }

    const cudaStream_t outer_ = currentStream;
    cudaStream_t stream_ = nullptr;
};

}  // namespace cudalib
