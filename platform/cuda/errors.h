// Errors between the numbers of the installed toolkit and those of CUDA 3.
#pragma once

#include <cublas_v2.h>
#include <cuda_runtime_api.h>

#include "platform/cuda3_errors.h"

namespace gpu {

// The CUDA 3 number of an error of the runtime's. Also the thread's last error from now on.
int reported(cudaError_t error);
// Sets the thread's last error to a CUDA 3 number and returns it.
int reported3(int error);

// Legacy CUBLAS statuses.
int legacyStatus(cublasStatus_t status);

}  // namespace gpu
