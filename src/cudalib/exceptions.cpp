#include "cudalib/exceptions.h"

namespace cudalib {

void checkCudaError(cudaError_t error) {
    if (error == cudaSuccess) return;
    if (error == cudaErrorMemoryAllocation || error == cudaErrorMemoryValueTooLarge)
        throw CudaMemoryException(cudaGetErrorString(error));
    throw CudaRuntimeException(error);
}

void checkCublasError(cublasStatus status) {
    if (status == CUBLAS_STATUS_SUCCESS) return;
    if (status == CUBLAS_STATUS_ALLOC_FAILED)
        throw CudaMemoryException("CUBLAS Allocation Failure");
    throw CublasException(status);
}

void checkLastCudaError() {
    checkCudaError(cudaGetLastError());
}

void checkLastCublasError() {
    checkCublasError(cublasGetError());
}

void synchronizeAndCheck() {
    cudaThreadSynchronize();  // its failure is also the last error, read below
    checkLastCublasError();
    checkLastCudaError();
}

}  // namespace cudalib
