// Legacy CUBLAS over the CPU BLAS: its state.
#include "platform/software/blas_call.h"

namespace software {

int cublasInit() {
    const Injected fault = observe("cublasInit");
    if (fault.hit) return fault.cublasError;
    if (bindContext() != cudaSuccess) return CUBLAS_STATUS_NOT_INITIALIZED;
    blasReady = true;
    return CUBLAS_STATUS_SUCCESS;
}

int cublasShutdown() {
    observe("cublasShutdown");
    drainAll();
    blasReady = false;
    releaseKept();  // the library is done for now
    return CUBLAS_STATUS_SUCCESS;
}

void resetBlas() {
    blasReady = false;
    blasStream = nullptr;
}

int cublasSetKernelStream(platform::Stream stream) {
    const Injected fault = observe("cublasSetKernelStream", stream);
    blasStream = stream;
    if (fault.hit) setCublasError(fault.cublasError);
    return fault.hit ? fault.cublasError : CUBLAS_STATUS_SUCCESS;
}

int cublasGetError() {
    const Injected fault = observe("cublasGetError");
    const int status = takeCublasError();
    return fault.hit ? fault.cublasError : status;
}

}  // namespace software
