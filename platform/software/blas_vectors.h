// Legacy CUBLAS over the CPU BLAS: the routines on vectors.
#pragma once

#include "platform/software/blas_call.h"

namespace software {

// Not cut, and work that no other thread is woken for.
inline Tiles whole(int n) {
    return Tiles::one(1, n, n);
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    blasCall<T>(
        Names<T>::copy, platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto at, const Tile&) { cpu::copy<T>(n, at[0], incx, at[1], incy); }, n, x, incx, y,
        incy);
}

template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    blasCall<T>(
        Names<T>::swap, platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto at, const Tile&) { cpu::swap<T>(n, at[0], incx, at[1], incy); }, n, x, incx, y,
        incy);
}

template <class T>
void scal(int n, T alpha, T* x, int incx) {
    blasCall<T>(
        Names<T>::scal, platform::vectorOperands(n, x, incx), whole(n),
        [=](auto at, const Tile&) { cpu::scal<T>(n, alpha, at[0], incx); }, n, x, incx);
}

template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy) {
    blasCall<T>(
        Names<T>::axpy, platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto at, const Tile&) { cpu::axpy<T>(n, alpha, at[0], incx, at[1], incy); }, n, x, incx,
        y, incy);
}

template <class T>
void rot(int n, T* x, int incx, T* y, int incy, platform::RealOf<T> c, platform::RealOf<T> s) {
    blasCall<T>(
        Names<T>::rot, platform::vectorOperands(n, x, incx, y, incy), whole(n),
        [=](auto at, const Tile&) { cpu::rot<T>(n, at[0], incx, at[1], incy, c, s); }, n, x, incx,
        y, incy);
}

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    const Update<T> by(alpha, beta);
    blasCall<T>(
        Names<T>::symv, platform::symvOperands(uplo, n, a, lda, x, incx, y, incy),
        Tiles::one(1, n, double(n) * n),
        [=](auto at, const Tile&) {
            by.apply('A', 1, n, at[2], std::labs(incy), [&] {
                cpu::symv<T>(uplo, n, by.alpha, at[0], lda, at[1], incx, by.beta, at[2], incy);
            });
        },
        uplo, n, a, lda, x, incx, y, incy);
}

template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    blasCall<T>(
        Names<T>::trmv, platform::trmvOperands(uplo, trans, diag, n, a, lda, x, incx),
        Tiles::one(1, n, double(n) * n),
        [=](auto at, const Tile&) { cpu::trmv<T>(uplo, trans, diag, n, at[0], lda, at[1], incx); },
        uplo, trans, diag, n, a, lda, x, incx);
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta,
          T* y, int incy) {
    const Update<T> by(alpha, beta);
    const bool plain = platform::oneOf(trans, "N");
    const int length = plain ? m : n;
    // It reads A once: bound by memory, more than one core of which can use.
    const double elements = double(m) * n * double(sizeof(T)) / sizeof(float);
    constexpr double least = 1 << 15;
    blasCall<T>(
        Names<T>::gemv, platform::gemvOperands(trans, m, n, a, lda, x, incx, y, incy),
        Tiles(1, length, elements, least, Tiles::Cut::columns),
        [=](auto operand, const Tile& t) {
            if (m == 0 || n == 0) return;
            auto product = [&](int first, int count) {
                // Counted backwards, the first elements are the last in memory.
                const int begin = incy < 0 ? length - first - count : first;
                T* const part = at(operand[2], std::abs(incy), 0, begin);
                by.apply('A', 1, count, part, std::size_t(std::labs(incy)), [&] {
                    cpu::gemv<T>(trans, plain ? count : m, plain ? n : count, by.alpha,
                                 atOf(trans, operand[0], lda, first, 0), lda, operand[1], incx,
                                 by.beta, part, incy);
                });
            };
            // Of 4 i + 2 rows OpenBLAS's complex kernels read the last two a column too far, and x
            // an element, which may be nobody's memory; of 4 i + 1 they do not.
            const bool apart = plain && platform::isComplex<T> && t.n % 4 == 2;
            product(t.j, apart ? t.n - 1 : t.n);
            if (apart) product(t.j + t.n - 1, 1);
        },
        trans, m, n, a, lda, x, incx, y, incy);
}

}  // namespace software
