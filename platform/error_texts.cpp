#include "platform/error_texts.h"

#include "platform/cuda3_errors.h"

namespace platform {

const char* errorText(int error) {
    using namespace cuda3;
    struct Text {
        int error;
        const char* text;
    };
    constexpr Text texts[] = {
        {cudaSuccess, "no error"},
        {cudaErrorMissingConfiguration, "__global__ function call is not configured"},
        {cudaErrorMemoryAllocation, "out of memory"},
        {cudaErrorInitializationError, "initialization error"},
        {cudaErrorLaunchFailure, "unspecified launch failure"},
        {cudaErrorInvalidDeviceFunction, "invalid device function"},
        {cudaErrorInvalidConfiguration, "invalid configuration argument"},
        {cudaErrorInvalidDevice, "invalid device ordinal"},
        {cudaErrorInvalidValue, "invalid argument"},
        {cudaErrorInvalidPitchValue, "invalid pitch argument"},
        {cudaErrorInvalidHostPointer, "invalid host pointer"},
        {cudaErrorInvalidDevicePointer, "invalid device pointer"},
        {cudaErrorInvalidMemcpyDirection, "invalid copy direction for memcpy"},
        {cudaErrorMemoryValueTooLarge, "memory size or pointer value too large to fit in 32 bit"},
        {cudaErrorInvalidResourceHandle, "invalid resource handle"},
        {cudaErrorInsufficientDriver,
         "CUDA driver version is insufficient for CUDA runtime version"},
        {cudaErrorSetOnActiveProcess, "cannot set while device is active in this process"},
        {cudaErrorNoDevice, "no CUDA-capable device is detected"},
    };
    for (const Text& t : texts)
        if (t.error == error) return t.text;
    return "unknown error";
}

}  // namespace platform
