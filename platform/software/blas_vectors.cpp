// Legacy CUBLAS over the CPU BLAS: the routines on vectors.
#include "platform/software/blas_call.h"

namespace software {
namespace {

// Not cut, and work that no other thread is woken for.
Tiles whole(int n) {
    return Tiles::one(1, n, n);
}

}  // namespace

void copyVector(char type, int n, const void* x, int incx, void* y, int incy) {
    blasCall(
        type, "copy", platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto routines, auto at, const Tile&) { routines.copy(n, at[0], incx, at[1], incy); }, n,
        x, incx, y, incy);
}

void swapVectors(char type, int n, void* x, int incx, void* y, int incy) {
    blasCall(
        type, "swap", platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto routines, auto at, const Tile&) { routines.swap(n, at[0], incx, at[1], incy); }, n,
        x, incx, y, incy);
}

void scal(char type, int n, const void* alpha, void* x, int incx) {
    const Scalar by(alpha, elementSize(type));
    blasCall(
        type, "scal", platform::vectorOperands(n, x, incx), whole(n),
        [=](auto routines, auto at, const Tile&) { routines.scal(n, by.bytes, at[0], incx); }, n, x,
        incx);
}

void axpy(char type, int n, const void* alpha, const void* x, int incx, void* y, int incy) {
    const Scalar by(alpha, elementSize(type));
    blasCall(
        type, "axpy", platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto routines, auto at, const Tile&) {
            routines.axpy(n, by.bytes, at[0], incx, at[1], incy);
        },
        n, x, incx, y, incy);
}

void rot(char type, int n, void* x, int incx, void* y, int incy, const void* c, const void* s) {
    const Scalar cosine(c, realSize(type)), sine(s, realSize(type));
    blasCall(
        type,
        type == 'C'   ? "srot"
        : type == 'Z' ? "drot"
                      : "rot",
        platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto routines, auto at, const Tile&) {
            routines.rot(n, at[0], incx, at[1], incy, cosine.bytes, sine.bytes);
        },
        n, x, incx, y, incy);
}

void symv(char type, char uplo, int n, const void* alpha, const void* a, int lda, const void* x,
          int incx, const void* beta, void* y, int incy) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    blasCall(
        type, "symv", platform::symvOperands(uplo, n, a, lda, x, incx, y, incy),
        Tiles::one(1, n, double(n) * n),
        [=](auto routines, auto at, const Tile&) {
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
        Tiles::one(1, n, double(n) * n),
        [=](auto routines, auto at, const Tile&) {
            routines.trmv(uplo, trans, diag, n, at[0], lda, at[1], incx);
        },
        uplo, trans, diag, n, a, lda, x, incx);
}

void gemv(char type, char trans, int m, int n, const void* alpha, const void* a, int lda,
          const void* x, int incx, const void* beta, void* y, int incy) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    const bool plain = platform::oneOf(trans, "N");
    const int length = plain ? m : n;
    // It reads A once: bound by memory, more than one core of which can use.
    const double elements = double(m) * n * double(elementSize(type)) / sizeof(float);
    constexpr double least = 1 << 15;
    blasCall(
        type, "gemv", platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy),
        Tiles(1, length, elements, least, Tiles::Cut::columns),
        [=](auto routines, auto operand, const Tile& t) {
            if (m == 0 || n == 0) return;
            auto product = [&](int first, int count) {
                // Counted backwards, the first elements are the last in memory.
                const int begin = incy < 0 ? length - first - count : first;
                void* const part = at(type, operand[2], 0, begin, std::abs(incy));
                by.apply('A', 1, count, part, std::size_t(std::labs(incy)), [&] {
                    routines.gemv(trans, plain ? count : m, plain ? n : count, by.alpha.bytes,
                                  atOf(type, trans, operand[0], first, 0, lda), lda, operand[1],
                                  incx, by.beta.bytes, part, incy);
                });
            };
            // Of 4 i + 2 rows OpenBLAS's complex kernels read the last two a column too far, and x
            // an element, which may be nobody's memory; of 4 i + 1 they do not.
            const bool apart = plain && platform::isComplex(type) && t.n % 4 == 2;
            product(t.j, apart ? t.n - 1 : t.n);
            if (apart) product(t.j + t.n - 1, 1);
        },
        trans, m, n, a, lda, x, incx, y, incy);
}

}  // namespace software
