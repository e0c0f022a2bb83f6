#include "platform/cuda/errors.h"

#include "platform/cuda/device.h"

#include <iterator>

namespace gpu {
namespace {

// The errors that have changed their number since CUDA 3, or that stand for one that it had.
// For a text, the first row of a CUDA 3 number counts.
struct Translation {
    cudaError_t now;
    int then;
};
constexpr Translation translations[] = {
    {cudaErrorMissingConfiguration, 1},
    {cudaErrorLaunchFailure, 4},
    {cudaErrorIllegalAddress, 4},
    {cudaErrorMisalignedAddress, 4},
    {cudaErrorIllegalInstruction, 4},
    {cudaErrorInvalidAddressSpace, 4},
    {cudaErrorInvalidPc, 4},
    {cudaErrorHardwareStackError, 4},
    {cudaErrorAssert, 4},
    {cudaErrorLaunchTimeout, 6},
    {cudaErrorLaunchOutOfResources, 7},
    {cudaErrorInvalidDeviceFunction, 8},
    {cudaErrorNoKernelImageForDevice, 8},
    {cudaErrorInvalidDevice, 10},
    {cudaErrorInvalidValue, 11},
    {cudaErrorCudartUnloading, 29},
    {cudaErrorUnknown, 30},
    {cudaErrorInvalidResourceHandle, 33},
    {cudaErrorNotReady, 34},
    {cudaErrorInsufficientDriver, 35},
    {cudaErrorCallRequiresNewerDriver, 35},
    {cudaErrorStubLibrary, 35},
    {cudaErrorSetOnActiveProcess, 36},
    {cudaErrorNoDevice, 38},
    {cudaErrorECCUncorrectable, 39},
};

// CUDA 3 numbers without a successor.
constexpr int memoryValueTooLarge = 32;

thread_local int lastError = cudaSuccess;

int translated(cudaError_t error) {
    for (const Translation& t : translations)
        if (t.now == error) return t.then;
    return int(error);
}

}  // namespace

int reported(cudaError_t error) {
    if (error == cudaSuccess) return cudaSuccess;
    cudaGetLastError();  // the runtime's own word; ours is the one that is read
    return reported3(translated(error));
}

int reported3(int error) {
    if (error != cudaSuccess) lastError = error;
    return error;
}

int getLastError() {
    const int error = lastError;
    lastError = cudaSuccess;
    return error;
}

const char* errorText(int cuda3Error) {
    if (cuda3Error == memoryValueTooLarge)
        return "memory size or pointer value too large to fit in 32 bit";
    for (const Translation& t : translations)
        if (t.then == cuda3Error) return cudaGetErrorString(t.now);
    return cudaGetErrorString(cudaError_t(cuda3Error));
}

int legacyStatus(cublasStatus_t status) {
    switch (status) {
        case CUBLAS_STATUS_NOT_SUPPORTED:
            return CUBLAS_STATUS_ARCH_MISMATCH;
        case CUBLAS_STATUS_LICENSE_ERROR:
            return CUBLAS_STATUS_INTERNAL_ERROR;
        default:
            return int(status);  // the other numbers are those of the legacy interface
    }
}

}  // namespace gpu
