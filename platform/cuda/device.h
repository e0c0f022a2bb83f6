// The state that the parts of the CUDA platform share: one device for the whole process, as
// CUDA 3 has it, over a runtime whose current device is each thread's own.
#pragma once

#include <cublas_v2.h>
#include <cuda_runtime_api.h>

#include "platform/table.h"

namespace gpu {

// Takes the chosen device for good.
void bindContext();
bool contextBound();
// The device that was chosen, by default the first.
int processDevice();

// Makes the process's device the calling thread's current one, and puts back what the application
// had, be it nothing.
class OnDevice {
  public:
    OnDevice();
    ~OnDevice();
    OnDevice(const OnDevice&) = delete;
    OnDevice& operator=(const OnDevice&) = delete;

  private:
    bool switched_ = false;
    void* applicationsContext_ = nullptr;
    int applicationsDevice_ = 0;  // where the driver cannot be asked for contexts
};

// Another device was chosen.
void forgetContext();

// A stream that waits for no other, for copies.
cudaError_t takeCopyStream(cudaStream_t& stream);
void giveCopyStream(cudaStream_t stream);

// Destroys the streams and events that are kept for reuse.
void releaseKeptStreams();

#define ENTRY(kind, result, name, parameters) result name parameters;
#include "platform/entries.inc"

}  // namespace gpu
