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

// A stream that is waited for before it goes: what it has been given uses memory that may go next.
class Stream {
  public:
    enum Urgency { ordinary, urgent };  // whose kernels get free processors first

    explicit Stream(Urgency urgency = ordinary) {
        checkCudaError(urgency == urgent ? platform::urgentStreamCreate(&stream_)
                                         : cudaStreamCreate(&stream_));
    }
    ~Stream() {
        cudaStreamSynchronize(stream_);
        cudaStreamDestroy(stream_);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    operator cudaStream_t() const { return stream_; }

  private:
    cudaStream_t stream_ = nullptr;
};

// This thread's launches and CUBLAS calls go to a stream while this lives.
class OnStream {
  public:
    explicit OnStream(cudaStream_t stream) : OnStream() {
        currentStream = stream;
        checkCublasError(cublasSetKernelStream(stream));
    }
    ~OnStream() {
        currentStream = outer_;
        cublasSetKernelStream(outer_);
    }
    OnStream(const OnStream&) = delete;
    OnStream& operator=(const OnStream&) = delete;

    cudaStream_t outer() const { return outer_; }

  private:
    OnStream() = default;  // what is there from then on is destroyed if the rest fails

    const cudaStream_t outer_ = currentStream;
};

// A stream beside the default one, so that copies on other streams go on meanwhile: this thread's
// launches and CUBLAS calls go to it while it lives. To the application it is as the default stream
// is: what it is given waits for all that was issued before it, but on streams that do not wait for
// the default one.
class OwnStream {
  public:
    OwnStream() { Event().order(here_.outer(), stream_); }
    operator cudaStream_t() const { return stream_; }

  private:
    const Stream stream_;
    const OnStream here_{stream_};
};

}  // namespace cudalib
