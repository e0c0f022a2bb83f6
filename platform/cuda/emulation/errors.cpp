#include "platform/cuda/emulation/errors.h"

namespace emulated {
namespace {

int sticky = 0;
thread_local int last = 0;

}  // namespace

std::recursive_mutex& runtimeMutex() {
    static auto* mutex = new std::recursive_mutex;
    return *mutex;
}

int stickyError() {
    return sticky;
}

void setStickyError(int error) {
    if (!sticky) sticky = error;
}

void forgetErrors() {
    sticky = 0;
    last = 0;
}

cudaError_t result(int error) {
    if (sticky) error = sticky;
    if (error) last = error;
    return cudaError_t(error);
}

}  // namespace emulated

using namespace emulated;

extern "C" {

cudaError_t cudaGetLastError() {
    const Call call;
    const int error = sticky ? sticky : last;
    last = 0;
    return cudaError_t(error);
}

cudaError_t cudaPeekAtLastError() {
    const Call call;
    return cudaError_t(sticky ? sticky : last);
}

const char* cudaGetErrorString(cudaError_t error) {
    switch (int(error)) {
        case cudaSuccess:
            return "no error";
        case cudaErrorInvalidValue:
            return "invalid argument";
        case cudaErrorMemoryAllocation:
            return "out of memory";
        case cudaErrorInsufficientDriver:
            return "CUDA driver version is insufficient for CUDA runtime version";
        case cudaErrorNoDevice:
            return "no CUDA-capable device is detected";
        case cudaErrorIllegalAddress:
            return "an illegal memory access was encountered";
        case cudaErrorLaunchFailure:
            return "unspecified launch failure";
        default:
            return "an error of the emulated GPU";
    }
}
}
