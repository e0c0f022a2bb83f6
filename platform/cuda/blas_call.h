// How a legacy CUBLAS call is made over the current interface.
#pragma once

#include "platform/blas_arguments.h"
#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"

namespace gpu {

using platform::oneOf;

// Sets the thread's error word unless it tells an earlier error.
void noteBlas(int status);

// The calling thread's handle, on its kernel stream and in true single precision (no TF32),
// which is CUBLAS's default math mode.
cublasStatus_t blasHandle(cublasHandle_t& handle);

inline cublasOperation_t operation(char trans) {
    return oneOf(trans, "N") ? CUBLAS_OP_N : oneOf(trans, "T") ? CUBLAS_OP_T : CUBLAS_OP_C;
}
inline cublasSideMode_t sideMode(char side) {
    return oneOf(side, "L") ? CUBLAS_SIDE_LEFT : CUBLAS_SIDE_RIGHT;
}
inline cublasFillMode_t fillMode(char uplo) {
    return oneOf(uplo, "L") ? CUBLAS_FILL_MODE_LOWER : CUBLAS_FILL_MODE_UPPER;
}
inline cublasDiagType_t diagType(char diag) {
    return oneOf(diag, "U") ? CUBLAS_DIAG_UNIT : CUBLAS_DIAG_NON_UNIT;
}

// CUBLAS's own complex numbers.
template <class T>
struct NativeType {
    using Type = T;
};
template <>
struct NativeType<std::complex<float>> {
    using Type = cuComplex;
};
template <>
struct NativeType<std::complex<double>> {
    using Type = cuDoubleComplex;
};
template <class T>
using Native = typename NativeType<T>::Type;

// A scalar, which CUBLAS takes the address of, aligned as it may expect.
template <class T>
struct Scalar {
    alignas(Native<T>) T value;
    operator const Native<T>*() const { return reinterpret_cast<const Native<T>*>(&value); }
};

// An argument as CUBLAS takes it: sizes and options as they are.
template <class A>
A native(A argument) {
    return argument;
}
template <class T>
Native<T>* native(T* operand) {
    return reinterpret_cast<Native<T>*>(operand);
}
template <class T>
const Native<T>* native(const T* operand) {
    return reinterpret_cast<const Native<T>*>(operand);
}
inline Scalar<float> native(float scalar) {
    return {scalar};
}
inline Scalar<double> native(double scalar) {
    return {scalar};
}
template <class Real>
Scalar<std::complex<Real>> native(std::complex<Real> scalar) {
    return {scalar};
}

// The toolkit's routines of an element type.
template <class T>
struct Routines {
#define BLAS_ENTRY(name, S, D, C, Z, parameters) \
    static constexpr auto* name = platform::ofType<T>(S, D, C, Z);
#include "platform/entries.inc"
};

template <class Routine, class... Arguments>
void blasCall(bool valid, Routine* routine, Arguments... arguments) {
    if (!valid) return noteBlas(cuda3::CUBLAS_STATUS_INVALID_VALUE);
    OnDevice here;
    cublasHandle_t handle = nullptr;
    cublasStatus_t status = blasHandle(handle);
    if (status == CUBLAS_STATUS_SUCCESS) status = routine(handle, native(arguments)...);
    if (status == CUBLAS_STATUS_SUCCESS) return;
    // A kernel that failed before, in whatever way, takes the context with it, and a device that
    // cannot be reached does no better: that is the error to tell, not the one that CUBLAS has of
    // it.
    const cudaError_t before = cudaStreamQuery(nullptr);
    if (before == cudaSuccess || before == cudaErrorNotReady)
        noteBlas(legacyStatus(status));
    else
        reported(before);
}

}  // namespace gpu
