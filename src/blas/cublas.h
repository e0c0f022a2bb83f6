// Legacy CUBLAS by element type. Errors show at the next check.
#pragma once

#include <type_traits>

#include "platform/cuda3.h"
#include "runtime/complex.h"

namespace lumo::cublas {

// What CUBLAS takes an argument for: only complex numbers have another name there.
template <class A>
A plain(A argument) {
    return argument;
}
inline cuComplex plain(Complex<float> z) {
    return {z.re, z.im};
}
inline cuDoubleComplex plain(Complex<double> z) {
    return {z.re, z.im};
}
static_assert(alignof(cuComplex) == alignof(Complex<float>) &&
              alignof(cuDoubleComplex) == alignof(Complex<double>));
inline cuComplex* plain(Complex<float>* a) {
    return reinterpret_cast<cuComplex*>(a);
}
inline cuDoubleComplex* plain(Complex<double>* a) {
    return reinterpret_cast<cuDoubleComplex*>(a);
}
inline const cuComplex* plain(const Complex<float>* a) {
    return reinterpret_cast<const cuComplex*>(a);
}
inline const cuDoubleComplex* plain(const Complex<double>* a) {
    return reinterpret_cast<const cuDoubleComplex*>(a);
}

// A routine of the four element types; called for T, it calls that type's.
template <class T, class S, class D, class C, class Z>
auto routine(S s, D d, C c, Z z) {
    return [=](auto... arguments) {
        if constexpr (std::is_same_v<T, float>)
            s(plain(arguments)...);
        else if constexpr (std::is_same_v<T, double>)
            d(plain(arguments)...);
        else if constexpr (std::is_same_v<T, Complex<float>>)
            c(plain(arguments)...);
        else
            z(plain(arguments)...);
    };
}

// y := x.
template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    routine<T>(cublasScopy, cublasDcopy, cublasCcopy, cublasZcopy)(n, x, incx, y, incy);
}

template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    routine<T>(cublasSswap, cublasDswap, cublasCswap, cublasZswap)(n, x, incx, y, incy);
}

// x := alpha x.
template <class T>
void scal(int n, T alpha, T* x, int incx) {
    routine<T>(cublasSscal, cublasDscal, cublasCscal, cublasZscal)(n, alpha, x, incx);
}

// y := alpha x + y.
template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
    routine<T>(cublasSaxpy, cublasDaxpy, cublasCaxpy, cublasZaxpy)(n, alpha, x, incx, y, incy);
}

// x := c x + s y, y := c y - s x.
template <class T>
void rot(int n, T* x, int incx, T* y, int incy, RealOf<T> c, RealOf<T> s) {
    routine<T>(cublasSrot, cublasDrot, cublasCsrot, cublasZdrot)(n, x, incx, y, incy, c, s);
}

// y := alpha A x + beta y, A symmetric, also where it is complex, of order n.
template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    routine<T>(cublasSsymv, cublasDsymv, cublasCsymv, cublasZsymv)(uplo, n, alpha, a, lda, x, incx,
                                                                   beta, y, incy);
}

// x := op(A) x, A triangular of order n.
template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    routine<T>(cublasStrmv, cublasDtrmv, cublasCtrmv, cublasZtrmv)(uplo, trans, diag, n, a, lda, x,
                                                                   incx);
}

// y := alpha op(A) x + beta y, A m x n.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta,
          T* y, int incy) {
    routine<T>(cublasSgemv, cublasDgemv, cublasCgemv, cublasZgemv)(trans, m, n, alpha, a, lda, x,
                                                                   incx, beta, y, incy);
}

// C := alpha op(A) op(B) + beta C, C m x n.
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc) {
    routine<T>(cublasSgemm, cublasDgemm, cublasCgemm, cublasZgemm)(transa, transb, m, n, k, alpha,
                                                                   a, lda, b, ldb, beta, c, ldc);
}

// C := alpha A B + beta C (side "L") or alpha B A + beta C (side "R"), C m x n. A is symmetric,
// Hermitian where it is complex.
template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb,
          T beta, T* c, int ldc) {
    routine<T>(cublasSsymm, cublasDsymm, cublasChemm, cublasZhemm)(side, uplo, m, n, alpha, a, lda,
                                                                   b, ldb, beta, c, ldc);
}

// C := alpha op(A) op(A)^T + beta C, C n x n, one triangle.
template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c,
          int ldc) {
    routine<T>(cublasSsyrk, cublasDsyrk, cublasCsyrk, cublasZsyrk)(uplo, trans, n, k, alpha, a, lda,
                                                                   beta, c, ldc);
}

// C := alpha op(A) op(A)^H + beta C for complex A.
template <class T>
void herk(char uplo, char trans, int n, int k, RealOf<T> alpha, const T* a, int lda, RealOf<T> beta,
          T* c, int ldc) {
    routine<T>(cublasSsyrk, cublasDsyrk, cublasCherk, cublasZherk)(uplo, trans, n, k, alpha, a, lda,
                                                                   beta, c, ldc);
}

// C := alpha op(A) op(B)^T + alpha op(B) op(A)^T + beta C, one triangle; for complex elements
// alpha op(A) op(B)^H + conj(alpha) op(B) op(A)^H + beta C.
template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           RealOf<T> beta, T* c, int ldc) {
    routine<T>(cublasSsyr2k, cublasDsyr2k, cublasCher2k, cublasZher2k)(uplo, trans, n, k, alpha, a,
                                                                       lda, b, ldb, beta, c, ldc);
}

// B := alpha op(A) B (side "L") or alpha B op(A) (side "R"), A triangular, B m x n.
template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    routine<T>(cublasStrmm, cublasDtrmm, cublasCtrmm, cublasZtrmm)(side, uplo, transa, diag, m, n,
                                                                   alpha, a, lda, b, ldb);
}

// B := alpha op(A)^-1 B (side "L") or alpha B op(A)^-1 (side "R"), A triangular, B m x n.
template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    routine<T>(cublasStrsm, cublasDtrsm, cublasCtrsm, cublasZtrsm)(side, uplo, transa, diag, m, n,
                                                                   alpha, a, lda, b, ldb);
}

}  // namespace lumo::cublas
