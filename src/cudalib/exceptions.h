// Failures of the CUDA runtime and of CUBLAS as exceptions.
#pragma once

#include <new>
#include <stdexcept>
#include <string>

#include "platform/cuda3.h"

namespace cudalib {

// Device memory exhausted, as the CUDA runtime or CUBLAS reports it.
class CudaMemoryException : public std::bad_alloc {
  public:
    explicit CudaMemoryException(std::string message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return message_.c_str(); }

  private:
    std::string message_;
};

// Any other failure of the CUDA runtime.
class CudaRuntimeException : public std::runtime_error {
  public:
    explicit CudaRuntimeException(cudaError_t code)
        : std::runtime_error(cudaGetErrorString(code)), code_(code) {}
    cudaError_t code() const { return code_; }

  private:
    int code_;
};

// Any other failure of CUBLAS.
class CublasException : public std::runtime_error {
  public:
    explicit CublasException(cublasStatus code) : std::runtime_error(""), code_(code) {}
    cublasStatus code() const { return code_; }

  private:
    int code_;
};

// Return on success; throw CudaMemoryException for an exhausted memory, else one of the others.
void checkCudaError(cudaError_t error);
void checkCublasError(cublasStatus status);
void checkLastCudaError();
void checkLastCublasError();

// Waits for the device, then raises what went wrong there. Every compute function ends with it,
// so that an asynchronous failure surfaces in the call that caused it.
void synchronizeAndCheck();

}  // namespace cudalib
