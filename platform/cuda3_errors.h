// The error numbers of CUDA 3 and of legacy CUBLAS. In a namespace, since a toolkit of today has
// the same names for other numbers.
#pragma once

namespace cuda3 {

constexpr int cudaSuccess = 0;
constexpr int cudaErrorMissingConfiguration = 1;
constexpr int cudaErrorMemoryAllocation = 2;
constexpr int cudaErrorInitializationError = 3;
constexpr int cudaErrorLaunchFailure = 4;
constexpr int cudaErrorLaunchTimeout = 6;
constexpr int cudaErrorLaunchOutOfResources = 7;
constexpr int cudaErrorInvalidDeviceFunction = 8;
constexpr int cudaErrorInvalidConfiguration = 9;
constexpr int cudaErrorInvalidDevice = 10;
constexpr int cudaErrorInvalidValue = 11;
constexpr int cudaErrorInvalidPitchValue = 12;
constexpr int cudaErrorInvalidHostPointer = 16;
constexpr int cudaErrorInvalidDevicePointer = 17;
constexpr int cudaErrorInvalidMemcpyDirection = 21;
constexpr int cudaErrorCudartUnloading = 29;
constexpr int cudaErrorUnknown = 30;
constexpr int cudaErrorMemoryValueTooLarge = 32;
constexpr int cudaErrorInvalidResourceHandle = 33;
constexpr int cudaErrorNotReady = 34;
constexpr int cudaErrorInsufficientDriver = 35;
constexpr int cudaErrorSetOnActiveProcess = 36;
constexpr int cudaErrorNoDevice = 38;
constexpr int cudaErrorECCUncorrectable = 39;

constexpr int CUBLAS_STATUS_SUCCESS = 0;
constexpr int CUBLAS_STATUS_NOT_INITIALIZED = 1;
constexpr int CUBLAS_STATUS_ALLOC_FAILED = 3;
constexpr int CUBLAS_STATUS_INVALID_VALUE = 7;
constexpr int CUBLAS_STATUS_ARCH_MISMATCH = 8;
constexpr int CUBLAS_STATUS_MAPPING_ERROR = 11;
constexpr int CUBLAS_STATUS_EXECUTION_FAILED = 13;
constexpr int CUBLAS_STATUS_INTERNAL_ERROR = 14;

}  // namespace cuda3
