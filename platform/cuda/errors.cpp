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
    {cudaErrorMissingConfiguration, cuda3::cudaErrorMissingConfiguration},
    {cudaErrorLaunchFailure, cuda3::cudaErrorLaunchFailure},
    {cudaErrorIllegalAddress, cuda3::cudaErrorLaunchFailure},
    {cudaErrorMisalignedAddress, cuda3::cudaErrorLaunchFailure},
    {cudaErrorIllegalInstruction, cuda3::cudaErrorLaunchFailure},
    {cudaErrorInvalidAddressSpace, cuda3::cudaErrorLaunchFailure},
    {cudaErrorInvalidPc, cuda3::cudaErrorLaunchFailure},
    {cudaErrorHardwareStackError, cuda3::cudaErrorLaunchFailure},
    {cudaErrorAssert, cuda3::cudaErrorLaunchFailure},
    {cudaErrorLaunchTimeout, cuda3::cudaErrorLaunchTimeout},
    {cudaErrorLaunchOutOfResources, cuda3::cudaErrorLaunchOutOfResources},
    {cudaErrorInvalidDeviceFunction, cuda3::cudaErrorInvalidDeviceFunction},
    {cudaErrorNoKernelImageForDevice, cuda3::cudaErrorInvalidDeviceFunction},
    {cudaErrorInvalidDevice, cuda3::cudaErrorInvalidDevice},
    {cudaErrorInvalidValue, cuda3::cudaErrorInvalidValue},
    {cudaErrorCudartUnloading, cuda3::cudaErrorCudartUnloading},
    {cudaErrorUnknown, cuda3::cudaErrorUnknown},
    {cudaErrorInvalidResourceHandle, cuda3::cudaErrorInvalidResourceHandle},
    {cudaErrorNotReady, cuda3::cudaErrorNotReady},
    {cudaErrorInsufficientDriver, cuda3::cudaErrorInsufficientDriver},
    {cudaErrorCallRequiresNewerDriver, cuda3::cudaErrorInsufficientDriver},
    {cudaErrorStubLibrary, cuda3::cudaErrorInsufficientDriver},
    {cudaErrorSetOnActiveProcess, cuda3::cudaErrorSetOnActiveProcess},
    {cudaErrorNoDevice, cuda3::cudaErrorNoDevice},
    {cudaErrorECCUncorrectable, cuda3::cudaErrorECCUncorrectable},
};

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

const char* getErrorString(int cuda3Error) {
    if (cuda3Error == cuda3::cudaErrorMemoryValueTooLarge)  // without a successor
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
