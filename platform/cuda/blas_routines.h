// The legacy CUBLAS routines.
#pragma once

#include "platform/cuda/blas_call.h"

namespace gpu {

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, Routines<T>::copy, n, x, incx, y,
             incy);
}

template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, Routines<T>::swap, n, x, incx, y,
             incy);
}

template <class T>
void scal(int n, T alpha, T* x, int incx) {
    blasCall(platform::vectorOperands(n, x, incx).valid, Routines<T>::scal, n, alpha, x, incx);
}

template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, Routines<T>::axpy, n, alpha, x,
             incx, y, incy);
}

template <class T>
void rot(int n, T* x, int incx, T* y, int incy, platform::RealOf<T> c, platform::RealOf<T> s) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy).valid, Routines<T>::rot, n, x, incx, y,
             incy, c, s);
}

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    blasCall(platform::symvOperands(uplo, n, a, lda, x, incx, y, incy).valid, Routines<T>::symv,
             fillMode(uplo), n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    blasCall(platform::trmvOperands(uplo, trans, diag, n, a, lda, x, incx).valid, Routines<T>::trmv,
             fillMode(uplo), operation(trans), diagType(diag), n, a, lda, x, incx);
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta,
          T* y, int incy) {
    blasCall(platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy).valid, Routines<T>::gemv,
             operation(trans), m, n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc) {
    blasCall(platform::gemmOperands(transa, transb, m, n, k, a, lda, b, ldb, c, ldc).valid,
             Routines<T>::gemm, operation(transa), operation(transb), m, n, k, alpha, a, lda, b,
             ldb, beta, c, ldc);
}

template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb,
          T beta, T* c, int ldc) {
    blasCall(platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc).valid,
             Routines<T>::symm, sideMode(side), fillMode(uplo), m, n, alpha, a, lda, b, ldb, beta,
             c, ldc);
}

template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c,
          int ldc) {
    blasCall(
        platform::syrkOperands(uplo, trans, platform::symmetricTransposes<T>, n, k, a, lda, c, ldc)
            .valid,
        Routines<T>::syrk, fillMode(uplo), operation(trans), n, k, alpha, a, lda, beta, c, ldc);
}

template <class T>
void herk(char uplo, char trans, int n, int k, platform::RealOf<T> alpha, const T* a, int lda,
          platform::RealOf<T> beta, T* c, int ldc) {
    blasCall(
        platform::syrkOperands(uplo, trans, platform::hermitianTransposes<T>, n, k, a, lda, c, ldc)
            .valid,
        Routines<T>::herk, fillMode(uplo), operation(trans), n, k, alpha, a, lda, beta, c, ldc);
}

template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           platform::RealOf<T> beta, T* c, int ldc) {
    blasCall(platform::syr2kOperands(uplo, trans, platform::hermitianTransposes<T>, n, k, a, lda, b,
                                     ldb, c, ldc)
                 .valid,
             Routines<T>::syr2k, fillMode(uplo), operation(trans), n, k, alpha, a, lda, b, ldb,
             beta, c, ldc);
}

// The current interface multiplies out of place and takes its input as the place.
template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb).valid,
             Routines<T>::trmm, sideMode(side), fillMode(uplo), operation(transa), diagType(diag),
             m, n, alpha, a, lda, b, ldb, b, ldb);
}

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb).valid,
             Routines<T>::trsm, sideMode(side), fillMode(uplo), operation(transa), diagType(diag),
             m, n, alpha, a, lda, b, ldb);
}

}  // namespace gpu
