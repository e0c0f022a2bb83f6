#include "runtime/exceptions.h"

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

namespace lumo {

void throwArgumentError(int info) {
    throw InfoException(info, lumoArgumentError);
}

void throwDataError(int info) {
    throw InfoException(info, lumoDataError);
}

void throwLapackInfo(int info) {
    throw InfoException(info, info < 1 ? lumoArgumentError : lumoDataError);
}

void throwFeatureNotImplemented() {
    throw FeatNotImplException();
}

void checkReturnedInfo(int info) {
    if (info > 0) throw InfoException(info, lumoDataError);
    if (info < 0) throw InfoException(info, lumoRuntimeError);
}

}  // namespace lumo
