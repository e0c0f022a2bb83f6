// The CPU BLAS by its Fortran interface. Character arguments carry their lengths behind the
// others, as Fortran compilers expect.
#pragma once

#include <complex>
#include <cstddef>

namespace blas {

using FloatComplex = std::complex<float>;
using DoubleComplex = std::complex<double>;

extern "C" {
void scopy_(const int*, const void*, const int*, void*, const int*);
void sswap_(const int*, void*, const int*, void*, const int*);
void sscal_(const int*, const void*, void*, const int*);
void saxpy_(const int*, const void*, const void*, const int*, void*, const int*);
void srot_(const int*, void*, const int*, void*, const int*, const void*, const void*);
void ssymv_(const char*, const int*, const void*, const void*, const int*, const void*, const int*,
            const void*, void*, const int*, std::size_t);
void strmv_(const char*, const char*, const char*, const int*, const void*, const int*, void*,
            const int*, std::size_t, std::size_t, std::size_t);
decltype(scopy_) dcopy_, ccopy_, zcopy_;
decltype(sswap_) dswap_, cswap_, zswap_;
decltype(sscal_) dscal_, cscal_, zscal_;
decltype(saxpy_) daxpy_, caxpy_, zaxpy_;
decltype(srot_) drot_, csrot_, zdrot_;
decltype(ssymv_) dsymv_, csymv_, zsymv_;  // the complex ones are LAPACK's
decltype(strmv_) dtrmv_, ctrmv_, ztrmv_;
void sgemv_(const char*, const int*, const int*, const void*, const void*, const int*, const void*,
            const int*, const void*, void*, const int*, std::size_t);
void sgemm_(const char*, const char*, const int*, const int*, const int*, const void*, const void*,
            const int*, const void*, const int*, const void*, void*, const int*, std::size_t,
            std::size_t);
// Also xHEMM, xSYR2K, xHER2K: two letters, two sizes, three operands.
void ssymm_(const char*, const char*, const int*, const int*, const void*, const void*, const int*,
            const void*, const int*, const void*, void*, const int*, std::size_t, std::size_t);
void ssyrk_(const char*, const char*, const int*, const int*, const void*, const void*, const int*,
            const void*, void*, const int*, std::size_t, std::size_t);
void strsm_(const char*, const char*, const char*, const char*, const int*, const int*, const void*,
            const void*, const int*, void*, const int*, std::size_t, std::size_t, std::size_t,
            std::size_t);
decltype(sgemv_) dgemv_, cgemv_, zgemv_;
decltype(sgemm_) dgemm_, cgemm_, zgemm_;
decltype(ssymm_) dsymm_, chemm_, zhemm_, ssyr2k_, dsyr2k_, cher2k_, zher2k_;
decltype(ssyrk_) dsyrk_, csyrk_, zsyrk_, cherk_, zherk_;
decltype(strsm_) dtrsm_, ctrsm_, ztrsm_, strmm_, dtrmm_, ctrmm_, ztrmm_;
}

// The routines of one element type, arguments by value. For complex elements symm and syr2k are
// the Hermitian products; for real ones herk is syrk.
template <class T>
struct Routines;

// Vectors.
template <decltype(&scopy_) copyRoutine, decltype(&sswap_) swapRoutine,
          decltype(&sscal_) scalRoutine, decltype(&saxpy_) axpyRoutine, decltype(&srot_) rotRoutine,
          decltype(&ssymv_) symvRoutine, decltype(&strmv_) trmvRoutine>
struct VectorRoutinesOf {
    static void copy(int n, const void* x, int incx, void* y, int incy) {
        copyRoutine(&n, x, &incx, y, &incy);
    }
    static void swap(int n, void* x, int incx, void* y, int incy) {
        swapRoutine(&n, x, &incx, y, &incy);
    }
    static void scal(int n, const void* alpha, void* x, int incx) {
        scalRoutine(&n, alpha, x, &incx);
    }
    static void axpy(int n, const void* alpha, const void* x, int incx, void* y, int incy) {
        axpyRoutine(&n, alpha, x, &incx, y, &incy);
    }
    static void rot(int n, void* x, int incx, void* y, int incy, const void* c, const void* s) {
        rotRoutine(&n, x, &incx, y, &incy, c, s);
    }
    static void symv(char uplo, int n, const void* alpha, const void* a, int lda, const void* x,
                     int incx, const void* beta, void* y, int incy) {
        symvRoutine(&uplo, &n, alpha, a, &lda, x, &incx, beta, y, &incy, 1);
    }
    static void trmv(char uplo, char trans, char diag, int n, const void* a, int lda, void* x,
                     int incx) {
        trmvRoutine(&uplo, &trans, &diag, &n, a, &lda, x, &incx, 1, 1, 1);
    }
};

// Matrices.
template <decltype(&sgemv_) gemvRoutine, decltype(&sgemm_) gemmRoutine,
          decltype(&ssymm_) symmRoutine, decltype(&ssyrk_) syrkRoutine,
          decltype(&ssyrk_) herkRoutine, decltype(&ssymm_) syr2kRoutine,
          decltype(&strsm_) trmmRoutine, decltype(&strsm_) trsmRoutine>
struct MatrixRoutinesOf {
    static void gemv(char trans, int m, int n, const void* alpha, const void* a, int lda,
                     const void* x, int incx, const void* beta, void* y, int incy) {
        gemvRoutine(&trans, &m, &n, alpha, a, &lda, x, &incx, beta, y, &incy, 1);
    }
    static void gemm(char transa, char transb, int m, int n, int k, const void* alpha,
                     const void* a, int lda, const void* b, int ldb, const void* beta, void* c,
                     int ldc) {
        gemmRoutine(&transa, &transb, &m, &n, &k, alpha, a, &lda, b, &ldb, beta, c, &ldc, 1, 1);
    }
    static void symm(char side, char uplo, int m, int n, const void* alpha, const void* a, int lda,
                     const void* b, int ldb, const void* beta, void* c, int ldc) {
        symmRoutine(&side, &uplo, &m, &n, alpha, a, &lda, b, &ldb, beta, c, &ldc, 1, 1);
    }
    static void syrk(char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
                     const void* beta, void* c, int ldc) {
        syrkRoutine(&uplo, &trans, &n, &k, alpha, a, &lda, beta, c, &ldc, 1, 1);
    }
    static void herk(char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
                     const void* beta, void* c, int ldc) {
        herkRoutine(&uplo, &trans, &n, &k, alpha, a, &lda, beta, c, &ldc, 1, 1);
    }
    static void syr2k(char uplo, char trans, int n, int k, const void* alpha, const void* a,
                      int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
        syr2kRoutine(&uplo, &trans, &n, &k, alpha, a, &lda, b, &ldb, beta, c, &ldc, 1, 1);
    }
    static void trmm(char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
                     const void* a, int lda, void* b, int ldb) {
        trmmRoutine(&side, &uplo, &transa, &diag, &m, &n, alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
    }
    static void trsm(char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
                     const void* a, int lda, void* b, int ldb) {
        trsmRoutine(&side, &uplo, &transa, &diag, &m, &n, alpha, a, &lda, b, &ldb, 1, 1, 1, 1);
    }
};

template <>
struct Routines<float>
    : VectorRoutinesOf<scopy_, sswap_, sscal_, saxpy_, srot_, ssymv_, strmv_>,
      MatrixRoutinesOf<sgemv_, sgemm_, ssymm_, ssyrk_, ssyrk_, ssyr2k_, strmm_, strsm_> {};
template <>
struct Routines<double>
    : VectorRoutinesOf<dcopy_, dswap_, dscal_, daxpy_, drot_, dsymv_, dtrmv_>,
      MatrixRoutinesOf<dgemv_, dgemm_, dsymm_, dsyrk_, dsyrk_, dsyr2k_, dtrmm_, dtrsm_> {};
template <>
struct Routines<FloatComplex>
    : VectorRoutinesOf<ccopy_, cswap_, cscal_, caxpy_, csrot_, csymv_, ctrmv_>,
      MatrixRoutinesOf<cgemv_, cgemm_, chemm_, csyrk_, cherk_, cher2k_, ctrmm_, ctrsm_> {};
template <>
struct Routines<DoubleComplex>
    : VectorRoutinesOf<zcopy_, zswap_, zscal_, zaxpy_, zdrot_, zsymv_, ztrmv_>,
      MatrixRoutinesOf<zgemv_, zgemm_, zhemm_, zsyrk_, zherk_, zher2k_, ztrmm_, ztrsm_> {};

}  // namespace blas
