// The legacy CUBLAS routines on vectors.
#include "platform/cuda/blas_call.h"

namespace gpu {

void copyVector(char type, int n, const void* x, int incx, void* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, [&](cublasHandle_t handle) {
        return withRoutine(type, cublasScopy, cublasDcopy, cublasCcopy, cublasZcopy,
                           [&](auto routine, auto element) {
                               using T = typename decltype(element)::Type;
                               return routine(handle, n, as<T>(x), incx, as<T>(y), incy);
                           });
    });
}

void swapVectors(char type, int n, void* x, int incx, void* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, [&](cublasHandle_t handle) {
        return withRoutine(type, cublasSswap, cublasDswap, cublasCswap, cublasZswap,
                           [&](auto routine, auto element) {
                               using T = typename decltype(element)::Type;
                               return routine(handle, n, as<T>(x), incx, as<T>(y), incy);
                           });
    });
}

void scal(char type, int n, const void* alpha, void* x, int incx) {
    blasCall(platform::vectorOperands(n, x, incx).valid, [&](cublasHandle_t handle) {
        return withRoutine(type, cublasSscal, cublasDscal, cublasCscal, cublasZscal,
                           [&](auto routine, auto element) {
                               using T = typename decltype(element)::Type;
                               return routine(handle, n, as<T>(alpha), as<T>(x), incx);
                           });
    });
}

void axpy(char type, int n, const void* alpha, const void* x, int incx, void* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, [&](cublasHandle_t handle) {
        return withRoutine(type, cublasSaxpy, cublasDaxpy, cublasCaxpy, cublasZaxpy,
                           [&](auto routine, auto element) {
                               using T = typename decltype(element)::Type;
                               return routine(handle, n, as<T>(alpha), as<T>(x), incx, as<T>(y),
                                              incy);
                           });
    });
}

void rot(char type, int n, void* x, int incx, void* y, int incy, const void* c, const void* s) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, [&](cublasHandle_t handle) {
        return withRoutine(type, cublasSrot, cublasDrot, cublasCsrot, cublasZdrot,
                           [&](auto routine, auto element) {
                               using T = typename decltype(element)::Type;
                               using Real = typename decltype(element)::Real;
                               return routine(handle, n, as<T>(x), incx, as<T>(y), incy,
                                              as<Real>(c), as<Real>(s));
                           });
    });
}

void symv(char type, char uplo, int n, const void* alpha, const void* a, int lda, const void* x,
          int incx, const void* beta, void* y, int incy) {
    blasCall(platform::symvOperands(uplo, n, a, lda, x, incx, y, incy).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSsymv, cublasDsymv, cublasCsymv, cublasZsymv,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, fillMode(uplo), n, as<T>(alpha),
                                                       as<T>(a), lda, as<T>(x), incx, as<T>(beta),
                                                       as<T>(y), incy);
                                    });
             });
}

void trmv(char type, char uplo, char trans, char diag, int n, const void* a, int lda, void* x,
          int incx) {
    blasCall(platform::trmvOperands(uplo, trans, diag, n, a, lda, x, incx).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasStrmv, cublasDtrmv, cublasCtrmv, cublasZtrmv,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, fillMode(uplo), operation(trans),
                                                       diagType(diag), n, as<T>(a), lda, as<T>(x),
                                                       incx);
                                    });
             });
}

void gemv(char type, char trans, int m, int n, const void* alpha, const void* a, int lda,
          const void* x, int incx, const void* beta, void* y, int incy) {
    blasCall(platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSgemv, cublasDgemv, cublasCgemv, cublasZgemv,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, operation(trans), m, n, as<T>(alpha),
                                                       as<T>(a), lda, as<T>(x), incx, as<T>(beta),
                                                       as<T>(y), incy);
                                    });
             });
}

}  // namespace gpu
