#include "platform/error_texts.h"

#include "platform/cuda3.h"

namespace platform {

const char* errorText(int error) {
    switch (error) {
        case cudaSuccess:
            return "no error";
        case cudaErrorMissingConfiguration:
            return "__global__ function call is not configured";
        case cudaErrorMemoryAllocation:
            return "out of memory";
        case cudaErrorInitializationError:
            return "initialization error";
        case cudaErrorLaunchFailure:
            return "unspecified launch failure";
        case cudaErrorInvalidDeviceFunction:
            return "invalid device function";
        case cudaErrorInvalidConfiguration:
            return "invalid configuration argument";
        case cudaErrorInvalidDevice:
            return "invalid device ordinal";
        case cudaErrorInvalidValue:
            return "invalid argument";
        case cudaErrorInvalidPitchValue:
            return "invalid pitch argument";
        case cudaErrorInvalidHostPointer:
            return "invalid host pointer";
        case cudaErrorInvalidDevicePointer:
            return "invalid device pointer";
        case cudaErrorInvalidMemcpyDirection:
            return "invalid copy direction for memcpy";
        case cudaErrorMemoryValueTooLarge:
            return "memory size or pointer value too large to fit in 32 bit";
        case cudaErrorInvalidResourceHandle:
            return "invalid resource handle";
        case cudaErrorInsufficientDriver:
            return "CUDA driver version is insufficient for CUDA runtime version";
        case cudaErrorSetOnActiveProcess:
            return "cannot set while device is active in this process";
        case cudaErrorNoDevice:
            return "no CUDA-capable device is detected";
        default:
            return "unknown error";
    }
}

}  // namespace platform
