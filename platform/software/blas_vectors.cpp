// Legacy CUBLAS over the CPU BLAS: the routines on vectors.
#include "platform/software/blas_call.h"

namespace software {

void copyVector(char type, int n, const void* x, int incx, void* y, int incy) {
    blasCall(
        type, "copy", platform::vectorOperands(n, x, incx, y, incy),
        [=](auto routines, auto at) { routines.copy(n, at[0], incx, at[1], incy); }, n, x, incx, y,
        incy);
}

void swapVectors(char type, int n, void* x, int incx, void* y, int incy) {
    blasCall(
        type, "swap", platform::vectorOperands(n, x, incx, y, incy),
        [=](auto routines, auto at) { routines.swap(n, at[0], incx, at[1], incy); }, n, x, incx, y,
        incy);
}

void scal(char type, int n, const void* alpha, void* x, int incx) {
    const Scalar by(alpha, elementSize(type));
    blasCall(
        type, "scal", platform::vectorOperands(n, x, incx),
        [=](auto routines, auto at) { routines.scal(n, by.bytes, at[0], incx); }, n, x, incx);
}

void axpy(char type, int n, const void* alpha, const void* x, int incx, void* y, int incy) {
    const Scalar by(alpha, elementSize(type));
    blasCall(
        type, "axpy", platform::vectorOperands(n, x, incx, y, incy),
        [=](auto routines, auto at) { routines.axpy(n, by.bytes, at[0], incx, at[1], incy); }, n, x,
        incx, y, incy);
}

void rot(char type, int n, void* x, int incx, void* y, int incy, const void* c, const void* s) {
    const Scalar cosine(c, realSize(type)), sine(s, realSize(type));
    blasCall(
        type,
        type == 'C'   ? "srot"
        : type == 'Z' ? "drot"
                      : "rot",
        platform::vectorOperands(n, x, incx, y, incy),
        [=](auto routines, auto at) {
            routines.rot(n, at[0], incx, at[1], incy, cosine.bytes, sine.bytes);
        },
        n, x, incx, y, incy);
}

void symv(char type, char uplo, int n, const void* alpha, const void* a, int lda, const void* x,
          int incx, const void* beta, void* y, int incy) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    blasCall(
        type, "symv", platform::symvOperands(uplo, n, a, lda, x, incx, y, incy),
        [=](auto routines, auto at) {
            by.apply('A', 1, n, at[2], std::labs(incy), [&] {
                routines.symv(uplo, n, by.alpha.bytes, at[0], lda, at[1], incx, by.beta.bytes,
                              at[2], incy);
            });
        },
        uplo, n, a, lda, x, incx, y, incy);
}

void trmv(char type, char uplo, char trans, char diag, int n, const void* a, int lda, void* x,
          int incx) {
    blasCall(
        type, "trmv", platform::trmvOperands(uplo, trans, diag, n, a, lda, x, incx),
        [=](auto routines, auto at) {
            routines.trmv(uplo, trans, diag, n, at[0], lda, at[1], incx);
        },
        uplo, trans, diag, n, a, lda, x, incx);
}

void gemv(char type, char trans, int m, int n, const void* alpha, const void* a, int lda,
          const void* x, int incx, const void* beta, void* y, int incy) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    const int lengthY = platform::oneOf(trans, "N") ? m : n;
    blasCall(
        type, "gemv", platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy),
        [=](auto routines, auto at) {
            if (m == 0 || n == 0) return;
            by.apply('A', 1, lengthY, at[2], std::labs(incy), [&] {
                routines.gemv(trans, m, n, by.alpha.bytes, at[0], lda, at[1], incx, by.beta.bytes,
                              at[2], incy);
            });
        },
        trans, m, n, a, lda, x, incx, y, incy);
}

}  // namespace software
