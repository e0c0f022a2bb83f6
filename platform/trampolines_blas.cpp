// The legacy CUBLAS routines, each forwarding to the platform that was chosen.
#include "platform/cuda3.h"

namespace {

const platform::Table& table() {
    return *platform::choice().table;
}

}  // namespace

void cublasScopy(int n, const float* x, int incx, float* y, int incy) {
    table().copyVector('S', n, x, incx, y, incy);
}
void cublasDcopy(int n, const double* x, int incx, double* y, int incy) {
    table().copyVector('D', n, x, incx, y, incy);
}
void cublasCcopy(int n, const cuComplex* x, int incx, cuComplex* y, int incy) {
    table().copyVector('C', n, x, incx, y, incy);
}
void cublasZcopy(int n, const cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy) {
    table().copyVector('Z', n, x, incx, y, incy);
}
void cublasSswap(int n, float* x, int incx, float* y, int incy) {
    table().swapVectors('S', n, x, incx, y, incy);
}
void cublasDswap(int n, double* x, int incx, double* y, int incy) {
    table().swapVectors('D', n, x, incx, y, incy);
}
void cublasCswap(int n, cuComplex* x, int incx, cuComplex* y, int incy) {
    table().swapVectors('C', n, x, incx, y, incy);
}
void cublasZswap(int n, cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy) {
    table().swapVectors('Z', n, x, incx, y, incy);
}
void cublasSscal(int n, float alpha, float* x, int incx) {
    table().scal('S', n, &alpha, x, incx);
}
void cublasDscal(int n, double alpha, double* x, int incx) {
    table().scal('D', n, &alpha, x, incx);
}
void cublasCscal(int n, cuComplex alpha, cuComplex* x, int incx) {
    table().scal('C', n, &alpha, x, incx);
}
void cublasZscal(int n, cuDoubleComplex alpha, cuDoubleComplex* x, int incx) {
    table().scal('Z', n, &alpha, x, incx);
}
void cublasSaxpy(int n, float alpha, const float* x, int incx, float* y, int incy) {
    table().axpy('S', n, &alpha, x, incx, y, incy);
}
void cublasDaxpy(int n, double alpha, const double* x, int incx, double* y, int incy) {
    table().axpy('D', n, &alpha, x, incx, y, incy);
}
void cublasCaxpy(int n, cuComplex alpha, const cuComplex* x, int incx, cuComplex* y, int incy) {
    table().axpy('C', n, &alpha, x, incx, y, incy);
}
void cublasZaxpy(int n, cuDoubleComplex alpha, const cuDoubleComplex* x, int incx,
                 cuDoubleComplex* y, int incy) {
    table().axpy('Z', n, &alpha, x, incx, y, incy);
}
void cublasSrot(int n, float* x, int incx, float* y, int incy, float c, float s) {
    table().rot('S', n, x, incx, y, incy, &c, &s);
}
void cublasDrot(int n, double* x, int incx, double* y, int incy, double c, double s) {
    table().rot('D', n, x, incx, y, incy, &c, &s);
}
void cublasCsrot(int n, cuComplex* x, int incx, cuComplex* y, int incy, float c, float s) {
    table().rot('C', n, x, incx, y, incy, &c, &s);
}
void cublasZdrot(int n, cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy, double c,
                 double s) {
    table().rot('Z', n, x, incx, y, incy, &c, &s);
}
void cublasSsymv(char uplo, int n, float alpha, const float* a, int lda, const float* x, int incx,
                 float beta, float* y, int incy) {
    table().symv('S', uplo, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasDsymv(char uplo, int n, double alpha, const double* a, int lda, const double* x,
                 int incx, double beta, double* y, int incy) {
    table().symv('D', uplo, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasCsymv(char uplo, int n, cuComplex alpha, const cuComplex* a, int lda, const cuComplex* x,
                 int incx, cuComplex beta, cuComplex* y, int incy) {
    table().symv('C', uplo, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasZsymv(char uplo, int n, cuDoubleComplex alpha, const cuDoubleComplex* a, int lda,
                 const cuDoubleComplex* x, int incx, cuDoubleComplex beta, cuDoubleComplex* y,
                 int incy) {
    table().symv('Z', uplo, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasStrmv(char uplo, char trans, char diag, int n, const float* a, int lda, float* x,
                 int incx) {
    table().trmv('S', uplo, trans, diag, n, a, lda, x, incx);
}
void cublasDtrmv(char uplo, char trans, char diag, int n, const double* a, int lda, double* x,
                 int incx) {
    table().trmv('D', uplo, trans, diag, n, a, lda, x, incx);
}
void cublasCtrmv(char uplo, char trans, char diag, int n, const cuComplex* a, int lda, cuComplex* x,
                 int incx) {
    table().trmv('C', uplo, trans, diag, n, a, lda, x, incx);
}
void cublasZtrmv(char uplo, char trans, char diag, int n, const cuDoubleComplex* a, int lda,
                 cuDoubleComplex* x, int incx) {
    table().trmv('Z', uplo, trans, diag, n, a, lda, x, incx);
}
void cublasSgemv(char trans, int m, int n, float alpha, const float* a, int lda, const float* x,
                 int incx, float beta, float* y, int incy) {
    table().gemv('S', trans, m, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasDgemv(char trans, int m, int n, double alpha, const double* a, int lda, const double* x,
                 int incx, double beta, double* y, int incy) {
    table().gemv('D', trans, m, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasCgemv(char trans, int m, int n, cuComplex alpha, const cuComplex* a, int lda,
                 const cuComplex* x, int incx, cuComplex beta, cuComplex* y, int incy) {
    table().gemv('C', trans, m, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasZgemv(char trans, int m, int n, cuDoubleComplex alpha, const cuDoubleComplex* a, int lda,
                 const cuDoubleComplex* x, int incx, cuDoubleComplex beta, cuDoubleComplex* y,
                 int incy) {
    table().gemv('Z', trans, m, n, &alpha, a, lda, x, incx, &beta, y, incy);
}
void cublasSgemm(char transa, char transb, int m, int n, int k, float alpha, const float* a,
                 int lda, const float* b, int ldb, float beta, float* c, int ldc) {
    table().gemm('S', transa, transb, m, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasDgemm(char transa, char transb, int m, int n, int k, double alpha, const double* a,
                 int lda, const double* b, int ldb, double beta, double* c, int ldc) {
    table().gemm('D', transa, transb, m, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasCgemm(char transa, char transb, int m, int n, int k, cuComplex alpha, const cuComplex* a,
                 int lda, const cuComplex* b, int ldb, cuComplex beta, cuComplex* c, int ldc) {
    table().gemm('C', transa, transb, m, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasZgemm(char transa, char transb, int m, int n, int k, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb,
                 cuDoubleComplex beta, cuDoubleComplex* c, int ldc) {
    table().gemm('Z', transa, transb, m, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasSsymm(char side, char uplo, int m, int n, float alpha, const float* a, int lda,
                 const float* b, int ldb, float beta, float* c, int ldc) {
    table().symm('S', side, uplo, m, n, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasDsymm(char side, char uplo, int m, int n, double alpha, const double* a, int lda,
                 const double* b, int ldb, double beta, double* c, int ldc) {
    table().symm('D', side, uplo, m, n, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasChemm(char side, char uplo, int m, int n, cuComplex alpha, const cuComplex* a, int lda,
                 const cuComplex* b, int ldb, cuComplex beta, cuComplex* c, int ldc) {
    table().symm('C', side, uplo, m, n, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasZhemm(char side, char uplo, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb,
                 cuDoubleComplex beta, cuDoubleComplex* c, int ldc) {
    table().symm('Z', side, uplo, m, n, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasSsyrk(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                 float beta, float* c, int ldc) {
    table().syrk('S', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasDsyrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                 double beta, double* c, int ldc) {
    table().syrk('D', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasCsyrk(char uplo, char trans, int n, int k, cuComplex alpha, const cuComplex* a, int lda,
                 cuComplex beta, cuComplex* c, int ldc) {
    table().syrk('C', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasZsyrk(char uplo, char trans, int n, int k, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex beta, cuDoubleComplex* c,
                 int ldc) {
    table().syrk('Z', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasCherk(char uplo, char trans, int n, int k, float alpha, const cuComplex* a, int lda,
                 float beta, cuComplex* c, int ldc) {
    table().herk('C', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasZherk(char uplo, char trans, int n, int k, double alpha, const cuDoubleComplex* a,
                 int lda, double beta, cuDoubleComplex* c, int ldc) {
    table().herk('Z', uplo, trans, n, k, &alpha, a, lda, &beta, c, ldc);
}
void cublasSsyr2k(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                  const float* b, int ldb, float beta, float* c, int ldc) {
    table().syr2k('S', uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasDsyr2k(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                  const double* b, int ldb, double beta, double* c, int ldc) {
    table().syr2k('D', uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasCher2k(char uplo, char trans, int n, int k, cuComplex alpha, const cuComplex* a, int lda,
                  const cuComplex* b, int ldb, float beta, cuComplex* c, int ldc) {
    table().syr2k('C', uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasZher2k(char uplo, char trans, int n, int k, cuDoubleComplex alpha,
                  const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb, double beta,
                  cuDoubleComplex* c, int ldc) {
    table().syr2k('Z', uplo, trans, n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
}
void cublasStrmm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb) {
    table().trmm('S', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasDtrmm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb) {
    table().trmm('D', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasCtrmm(char side, char uplo, char transa, char diag, int m, int n, cuComplex alpha,
                 const cuComplex* a, int lda, cuComplex* b, int ldb) {
    table().trmm('C', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasZtrmm(char side, char uplo, char transa, char diag, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex* b, int ldb) {
    table().trmm('Z', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasStrsm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb) {
    table().trsm('S', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasDtrsm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb) {
    table().trsm('D', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasCtrsm(char side, char uplo, char transa, char diag, int m, int n, cuComplex alpha,
                 const cuComplex* a, int lda, cuComplex* b, int ldb) {
    table().trsm('C', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
void cublasZtrsm(char side, char uplo, char transa, char diag, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex* b, int ldb) {
    table().trsm('Z', side, uplo, transa, diag, m, n, &alpha, a, lda, b, ldb);
}
