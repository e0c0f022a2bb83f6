// How errors travel inside the library, and the helpers that raise them.
#pragma once

#include <new>
#include <stdexcept>
#include <string>

#include "lumo.h"
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

namespace lumo {

// A result in LAPACK's sense: bad argument, bad data. Not a std::exception, so that no handler
// for those takes it for a failure of the machine.
class InfoException {
  public:
    InfoException(int info, lumoStatus status) : info_(info), status_(status) {}
    int info() const { return info_; }
    lumoStatus status() const { return lumoStatus(status_); }

  private:
    int info_;
    int status_;
};

// A combination of options that is not implemented.
class FeatNotImplException {};

// `info` is minus the argument's 1-based position.
[[noreturn]] void throwArgumentError(int info);
// `info` is a positive position in the data.
[[noreturn]] void throwDataError(int info);
// LAPACK's info: an argument error below 1 (0 included), else a data error.
[[noreturn]] void throwLapackInfo(int info);
[[noreturn]] void throwFeatureNotImplemented();
// The info of a CPU LAPACK routine: positive is a data error; negative means that this library
// called it wrongly, a runtime error.
void checkReturnedInfo(int info);

}  // namespace lumo
