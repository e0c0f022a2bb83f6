// CUBLAS calls: their checks, and their time.
#pragma once

#include "platform/blas_arguments.h"
#include "platform/timeline/costs.h"
#include "platform/timeline/state.h"

namespace timeline {

// A call with these operands that takes so much.
template <std::size_t n>
void blasCall(const platform::BlasOperands<n>& operands, Load load) {
    const Entry entry;
    State& s = state();
    ++s.counts.products;
    s.clock.host(Kind::call, s.machine.product);
    if (!s.cublasReady)
        s.cublasError = CUBLAS_STATUS_NOT_INITIALIZED;
    else if (!operands.valid)
        s.cublasError = CUBLAS_STATUS_INVALID_VALUE;
    else if (!operands.each.back().empty())
        submit(s.blasStream, Kind::product, load);
}

template <class T>
Load vectorTime(double elements) {
    return vectorLoad(state().machine, elementFor<T>, elements);
}
template <class T>
Load productTime(double m, double n, double k, double part = 1) {
    return productLoad(state().machine, elementFor<T>, m, n, k, part);
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy), vectorTime<T>(2. * n));
}
template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy), vectorTime<T>(4. * n));
}
template <class T>
void scal(int n, T, T* x, int incx) {
    blasCall(platform::vectorOperands(n, x, incx), vectorTime<T>(2. * n));
}
template <class T>
void axpy(int n, T, const T* x, int incx, T* y, int incy) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy), vectorTime<T>(3. * n));
}
template <class T, class Real = platform::RealOf<T>>
void rot(int n, T* x, int incx, T* y, int incy, Real, Real) {
    blasCall(platform::vectorOperands(n, x, incx, y, incy), vectorTime<T>(4. * n));
}
template <class T>
void symv(char uplo, int n, T, const T* a, int lda, const T* x, int incx, T, T* y, int incy) {
    blasCall(platform::symvOperands(uplo, n, a, lda, x, incx, y, incy),
             vectorTime<T>(double(n) * n));
}
template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    blasCall(platform::trmvOperands(uplo, trans, diag, n, a, lda, x, incx),
             vectorTime<T>(double(n) * n / 2));
}
template <class T>
void gemv(char trans, int m, int n, T, const T* a, int lda, const T* x, int incx, T, T* y,
          int incy) {
    blasCall(platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy),
             vectorTime<T>(double(m) * n));
}
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T, const T* a, int lda, const T* b,
          int ldb, T, T* c, int ldc) {
    blasCall(platform::gemmOperands(transa, transb, m, n, k, a, lda, b, ldb, c, ldc),
             productTime<T>(m, n, k));
}
template <class T>
void symm(char side, char uplo, int m, int n, T, const T* a, int lda, const T* b, int ldb, T, T* c,
          int ldc) {
    blasCall(platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc),
             productTime<T>(m, n, platform::oneOf(side, "L") ? m : n));
}
template <class T>
void syrk(char uplo, char trans, int n, int k, T, const T* a, int lda, T, T* c, int ldc) {
    blasCall(
        platform::syrkOperands(uplo, trans, platform::symmetricTransposes<T>, n, k, a, lda, c, ldc),
        productTime<T>(n, n, k, 0.5));
}
template <class T, class Real = platform::RealOf<T>>
void herk(char uplo, char trans, int n, int k, Real, const T* a, int lda, Real, T* c, int ldc) {
    blasCall(
        platform::syrkOperands(uplo, trans, platform::hermitianTransposes<T>, n, k, a, lda, c, ldc),
        productTime<T>(n, n, k, 0.5));
}
template <class T, class Real = platform::RealOf<T>>
void syr2k(char uplo, char trans, int n, int k, T, const T* a, int lda, const T* b, int ldb, Real,
           T* c, int ldc) {
    blasCall(platform::syr2kOperands(uplo, trans, platform::hermitianTransposes<T>, n, k, a, lda, b,
                                     ldb, c, ldc),
             productTime<T>(n, n, 2. * k, 0.5));
}
template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T, const T* a, int lda, T* b,
          int ldb) {
    const double order = platform::oneOf(side, "L") ? m : n;
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
             productTime<T>(m, n, order / 2));
}
template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T, const T* a, int lda, T* b,
          int ldb) {
    const bool left = platform::oneOf(side, "L");
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
             solveLoad(state().machine, elementFor<T>, left ? m : n, left ? n : m));
}

}  // namespace timeline
