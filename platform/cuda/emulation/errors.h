// The runtime's errors, and the lock around it: one call at a time.
#pragma once

#include <cuda_runtime_api.h>

#include <mutex>

namespace emulated {

std::recursive_mutex& runtimeMutex();

// The error of work that failed: every later call returns it.
int stickyError();
void setStickyError(int error);
void forgetErrors();

// What a call returns, remembered as the thread's last error.
cudaError_t result(int error);

// Entered by every function of the runtime.
class Call {
  public:
    Call() : lock_(runtimeMutex()) {}

  private:
    std::lock_guard<std::recursive_mutex> lock_;
};

}  // namespace emulated
