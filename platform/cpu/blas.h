// The CPU BLAS, arguments by value: cpu::gemm<float>('N', 'T', m, n, k, alpha, a, lda, ...).
#pragma once

#include "platform/cpu/fortran.h"

namespace cpu {

// Vectors.
CPU_ROUTINE(copy, scopy, dcopy, ccopy, zcopy, void(int n, const T* x, int incx, T* y, int incy))
CPU_ROUTINE(swap, sswap, dswap, cswap, zswap, void(int n, T* x, int incx, T* y, int incy))
CPU_ROUTINE(scal, sscal, dscal, cscal, zscal, void(int n, T alpha, T* x, int incx))
CPU_ROUTINE(axpy, saxpy, daxpy, caxpy, zaxpy,
            void(int n, T alpha, const T* x, int incx, T* y, int incy))
CPU_ROUTINE(rot, srot, drot, csrot, zdrot, void(int n, T* x, int incx, T* y, int incy, R c, R s))

// A matrix and vectors. The complex symv are LAPACK's.
CPU_ROUTINE(gemv, sgemv, dgemv, cgemv, zgemv,
            void(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx,
                 T beta, T* y, int incy))
CPU_ROUTINE(symv, ssymv, dsymv, csymv, zsymv,
            void(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
                 int incy))
CPU_ROUTINE(trmv, strmv, dtrmv, ctrmv, ztrmv,
            void(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx))

// Matrices. For complex elements symm and syr2k are the Hermitian products; for real ones herk is
// syrk.
CPU_ROUTINE(gemm, sgemm, dgemm, cgemm, zgemm,
            void(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda,
                 const T* b, int ldb, T beta, T* c, int ldc))
CPU_ROUTINE(symm, ssymm, dsymm, chemm, zhemm,
            void(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b,
                 int ldb, T beta, T* c, int ldc))
CPU_ROUTINE(syrk, ssyrk, dsyrk, csyrk, zsyrk,
            void(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c,
                 int ldc))
CPU_ROUTINE(herk, ssyrk, dsyrk, cherk, zherk,
            void(char uplo, char trans, int n, int k, R alpha, const T* a, int lda, R beta, T* c,
                 int ldc))
CPU_ROUTINE(syr2k, ssyr2k, dsyr2k, cher2k, zher2k,
            void(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b,
                 int ldb, R beta, T* c, int ldc))
CPU_ROUTINE(trmm, strmm, dtrmm, ctrmm, ztrmm,
            void(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a,
                 int lda, T* b, int ldb))
CPU_ROUTINE(trsm, strsm, dtrsm, ctrsm, ztrsm,
            void(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a,
                 int lda, T* b, int ldb))

}  // namespace cpu
