// Legacy CUBLAS over the CPU BLAS: its state, and the routines on matrices.
#include "platform/software/blas_call.h"
#include "platform/software/triangular_solve.h"

namespace software {

int blasInit() {
    const Injected fault = observe("cublasInit");
    if (fault.hit) return fault.cublasError;
    if (bindContext() != cudaSuccess) return CUBLAS_STATUS_NOT_INITIALIZED;
    blasReady = true;
    return CUBLAS_STATUS_SUCCESS;
}

int blasShutdown() {
    observe("cublasShutdown");
    drainAll();
    blasReady = false;
    // The library is done for now: what was kept for reuse goes back to the system.
    deviceHeap().trim();
    pageLockedHeap().trim();
    return CUBLAS_STATUS_SUCCESS;
}

void resetBlas() {
    blasReady = false;
}

int blasGetError() {
    const Injected fault = observe("cublasGetError");
    const int status = takeCublasError();
    return fault.hit ? fault.cublasError : status;
}

void gemm(char type, char transa, char transb, int m, int n, int k, const void* alpha,
          const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)}, k);
    blasCall(
        type, "gemm", platform::gemmOperands(transa, transb, m, n, k, a, lda, b, ldb, c, ldc),
        [=](auto routines, auto at) {
            by.apply('A', m, n, at[2], ldc, [&] {
                routines.gemm(transa, transb, m, n, by.k, by.alpha.bytes, at[0], lda, at[1], ldb,
                              by.beta.bytes, at[2], ldc);
            });
        },
        transa, transb, m, n, k, a, lda, b, ldb, c, ldc);
}

void symm(char type, char side, char uplo, int m, int n, const void* alpha, const void* a, int lda,
          const void* b, int ldb, const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    blasCall(
        type, platform::isComplex(type) ? "hemm" : "symm",
        platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc),
        [=](auto routines, auto at) {
            by.apply('A', m, n, at[2], ldc, [&] {
                routines.symm(side, uplo, m, n, by.alpha.bytes, at[0], lda, at[1], ldb,
                              by.beta.bytes, at[2], ldc);
            });
        },
        side, uplo, m, n, a, lda, b, ldb, c, ldc);
}

void syrk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)}, k);
    blasCall(
        type, "syrk",
        platform::syrkOperands(uplo, trans, platform::syrkTransposes(type), n, k, a, lda, c, ldc),
        [=](auto routines, auto at) {
            by.apply(uplo, n, n, at[1], ldc, [&] {
                routines.syrk(uplo, trans, n, by.k, by.alpha.bytes, at[0], lda, by.beta.bytes,
                              at[1], ldc);
            });
        },
        uplo, trans, n, k, a, lda, c, ldc);
}

void herk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, realSize(type)}, {beta, realSize(type)}, k);
    blasCall(
        type, "herk", platform::syrkOperands(uplo, trans, "C", n, k, a, lda, c, ldc),
        [=](auto routines, auto at) {
            by.apply(uplo, n, n, at[1], ldc, [&] {
                routines.herk(uplo, trans, n, by.k, by.alpha.bytes, at[0], lda, by.beta.bytes,
                              at[1], ldc);
            });
        },
        uplo, trans, n, k, a, lda, c, ldc);
}

void syr2k(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
           int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, realSize(type)}, k);
    blasCall(
        type, platform::isComplex(type) ? "her2k" : "syr2k",
        platform::syr2kOperands(uplo, trans, platform::syr2kTransposes(type), n, k, a, lda, b, ldb,
                                c, ldc),
        [=](auto routines, auto at) {
            by.apply(uplo, n, n, at[2], ldc, [&] {
                routines.syr2k(uplo, trans, n, by.k, by.alpha.bytes, at[0], lda, at[1], ldb,
                               by.beta.bytes, at[2], ldc);
            });
        },
        uplo, trans, n, k, a, lda, b, ldb, c, ldc);
}

void trmm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    const Update by(type, {alpha, elementSize(type)}, {});
    blasCall(
        type, "trmm", platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
        [=](auto routines, auto at) {
            by.apply('A', m, n, at[1], ldb, [&] {
                routines.trmm(side, uplo, transa, diag, m, n, by.alpha.bytes, at[0], lda, at[1],
                              ldb);
            });
        },
        side, uplo, transa, diag, m, n, a, lda, b, ldb);
}

template <class T>
void solveTriangular(blas::Routines<T>, char side, char uplo, char transa, char diag, int m, int n,
                     const Scalar& alpha, const void* a, int lda, void* b, int ldb) {
    T by;
    std::memcpy(&by, alpha.bytes, sizeof by);
    TriangularSolve<T>{
        side, uplo, transa, diag, m, n, by, static_cast<const T*>(a), lda, static_cast<T*>(b), ldb}
        .run();
}

void trsm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    const Update by(type, {alpha, elementSize(type)}, {});
    blasCall(
        type, "trsm", platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
        [=](auto routines, auto at) {
            by.apply('A', m, n, at[1], ldb, [&] {
                solveTriangular(routines, side, uplo, transa, diag, m, n, by.alpha, at[0], lda,
                                at[1], ldb);
            });
        },
        side, uplo, transa, diag, m, n, a, lda, b, ldb);
}

}  // namespace software
