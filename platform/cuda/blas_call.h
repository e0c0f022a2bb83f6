// How a legacy CUBLAS call is made over the current interface.
#pragma once

#include "platform/blas_arguments.h"
#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"

namespace gpu {

using platform::oneOf;

constexpr int legacySuccess = 0, legacyNotInitialized = 1, legacyInvalidValue = 7;

// Sets the thread's error word unless it tells an earlier error.
void noteBlas(int status);

// The calling thread's handle, on the default stream and in true single precision (no TF32),
// which is CUBLAS's default math mode.
cublasStatus_t blasHandle(cublasHandle_t& handle);

template <class Call>
void blasCall(bool valid, Call call) {
    if (!valid) return noteBlas(legacyInvalidValue);
    OnDevice here;
    cublasHandle_t handle = nullptr;
    cublasStatus_t status = blasHandle(handle);
    if (status == CUBLAS_STATUS_SUCCESS) status = call(handle);
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

template <class T>
struct Element {
    using Type = T;
    using Real = T;
};
template <>
struct Element<cuComplex> {
    using Type = cuComplex;
    using Real = float;
};
template <>
struct Element<cuDoubleComplex> {
    using Type = cuDoubleComplex;
    using Real = double;
};

// Calls the routine of the type, with a tag of its element type.
template <class S, class D, class C, class Z, class F>
cublasStatus_t withRoutine(char type, S s, D d, C c, Z z, F f) {
    switch (type) {
        case 'S':
            return f(s, Element<float>{});
        case 'D':
            return f(d, Element<double>{});
        case 'C':
            return f(c, Element<cuComplex>{});
        default:
            return f(z, Element<cuDoubleComplex>{});
    }
}

template <class T>
const T* as(const void* p) {
    return static_cast<const T*>(p);
}
template <class T>
T* as(void* p) {
    return static_cast<T*>(p);
}

}  // namespace gpu
