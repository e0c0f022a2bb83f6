// Legacy CUBLAS over the CPU BLAS: the routines on matrices.
#pragma once

#include "platform/software/blas_call.h"
#include "platform/software/triangular_solve.h"

namespace software {

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc) {
    const Update<T> by(alpha, beta, k);
    blasCall<T>(
        Names<T>::gemm, platform::gemmOperands(transa, transb, m, n, k, a, lda, b, ldb, c, ldc),
        productTiles<T>(m, n, double(m) * n * k, Tiles::Cut::both),
        [=](auto operand, const Tile& t) {
            T* const result = at(operand[2], ldc, t.i, t.j);
            by.apply('A', t.m, t.n, result, ldc, [&] {
                cpu::gemm<T>(transa, transb, t.m, t.n, by.k, by.alpha,
                             atOf(transa, operand[0], lda, t.i, 0), lda,
                             atOf(transb, operand[1], ldb, 0, t.j), ldb, by.beta, result, ldc);
            });
        },
        transa, transb, m, n, k, a, lda, b, ldb, c, ldc);
}

// What an operation with a square matrix on one side leaves to cut: the other side's extent. Each
// tile packs the whole square, so there are few.
template <class T>
Tiles sidedTiles(char side, int m, int n) {
    const bool left = platform::oneOf(side, "L");
    return productTiles<T>(m, n, double(m) * n * (left ? m : n),
                           left ? Tiles::Cut::columns : Tiles::Cut::rows, 1);
}

template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb,
          T beta, T* c, int ldc) {
    const Update<T> by(alpha, beta);
    blasCall<T>(
        Names<T>::symm, platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc),
        sidedTiles<T>(side, m, n),
        [=](auto operand, const Tile& t) {
            T* const result = at(operand[2], ldc, t.i, t.j);
            by.apply('A', t.m, t.n, result, ldc, [&] {
                cpu::symm<T>(side, uplo, t.m, t.n, by.alpha, operand[0], lda,
                             at(operand[1], ldb, t.i, t.j), ldb, by.beta, result, ldc);
            });
        },
        side, uplo, m, n, a, lda, b, ldb, c, ldc);
}

// Columns of a triangle of order n: those of a tile are a triangle on the diagonal and a rectangle
// above or below it. onDiagonal(first, order), beside(first row, rows, first column, columns).
template <class OnDiagonal, class Beside>
void eachOfTriangle(char uplo, int n, const Tile& t, OnDiagonal onDiagonal, Beside beside) {
    const int behind = t.j + t.n;
    onDiagonal(t.j, t.n);
    if (platform::oneOf(uplo, "U") && t.j > 0) beside(0, t.j, t.j, t.n);
    if (platform::oneOf(uplo, "L") && behind < n) beside(behind, n - behind, t.j, t.n);
}
template <class T>
Tiles triangleTiles(int n, double multiplications) {
    return productTiles<T>(n, n, multiplications, Tiles::Cut::columns);
}

// syrk and herk, which differ in the letter of A's other occurrence and in their routine on the
// diagonal.
template <class T, class OnDiagonal>
void rankUpdate(const char* name, char uplo, char trans, const char* transposes, int n, int k,
                const Update<T>& by, const T* a, int lda, T* c, int ldc,
                const OnDiagonal& onDiagonal) {
    blasCall<T>(
        name, platform::syrkOperands(uplo, trans, transposes, n, k, a, lda, c, ldc),
        triangleTiles<T>(n, 0.5 * n * n * k),
        [=](auto operand, const Tile& t) {
            auto rows = [&](int i) { return atOf(trans, operand[0], lda, i, 0); };
            const bool plain = platform::oneOf(trans, "N");
            const char other = *transposes;
            eachOfTriangle(
                uplo, n, t,
                [&](int j, int order) {
                    T* const result = at(operand[1], ldc, j, j);
                    by.apply(uplo, order, order, result, ldc,
                             [&] { onDiagonal(order, rows(j), result); });
                },
                [&](int i, int m, int j, int columns) {
                    T* const result = at(operand[1], ldc, i, j);
                    by.apply('A', m, columns, result, ldc, [&] {
                        cpu::gemm<T>(plain ? 'N' : other, plain ? other : 'N', m, columns, by.k,
                                     by.alpha, rows(i), lda, rows(j), lda, by.beta, result, ldc);
                    });
                });
        },
        uplo, trans, n, k, a, lda, c, ldc);
}

template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c,
          int ldc) {
    const Update<T> by(alpha, beta, k);
    rankUpdate(Names<T>::syrk, uplo, trans, platform::symmetricTransposes<T>, n, k, by, a, lda, c,
               ldc, [=](int order, const T* rows, T* result) {
                   cpu::syrk<T>(uplo, trans, order, by.k, by.alpha, rows, lda, by.beta, result,
                                ldc);
               });
}

template <class T>
void herk(char uplo, char trans, int n, int k, platform::RealOf<T> alpha, const T* a, int lda,
          platform::RealOf<T> beta, T* c, int ldc) {
    const Update<T> by(alpha, beta, k);
    rankUpdate(Names<T>::herk, uplo, trans, platform::hermitianTransposes<T>, n, k, by, a, lda, c,
               ldc, [=](int order, const T* rows, T* result) {
                   cpu::herk<T>(uplo, trans, order, by.k, std::real(by.alpha), rows, lda,
                                std::real(by.beta), result, ldc);
               });
}

template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           platform::RealOf<T> beta, T* c, int ldc) {
    const Update<T> by(alpha, beta, k);
    const char* const transposes = platform::hermitianTransposes<T>;
    blasCall<T>(
        Names<T>::syr2k,
        platform::syr2kOperands(uplo, trans, transposes, n, k, a, lda, b, ldb, c, ldc),
        triangleTiles<T>(n, double(n) * n * k),
        [=](auto operand, const Tile& t) {
            auto rows = [&](int which, int i) {
                return atOf(trans, operand[which], which ? ldb : lda, i, 0);
            };
            const bool plain = platform::oneOf(trans, "N");
            const char first = plain ? 'N' : *transposes, second = plain ? *transposes : 'N';
            eachOfTriangle(
                uplo, n, t,
                [&](int j, int order) {
                    T* const result = at(operand[2], ldc, j, j);
                    by.apply(uplo, order, order, result, ldc, [&] {
                        cpu::syr2k<T>(uplo, trans, order, by.k, by.alpha, rows(0, j), lda,
                                      rows(1, j), ldb, std::real(by.beta), result, ldc);
                    });
                },
                [&](int i, int m, int j, int columns) {
                    T* const result = at(operand[2], ldc, i, j);
                    by.apply('A', m, columns, result, ldc, [&] {
                        cpu::gemm<T>(first, second, m, columns, by.k, by.alpha, rows(0, i), lda,
                                     rows(1, j), ldb, by.beta, result, ldc);
                        cpu::gemm<T>(first, second, m, columns, by.k, platform::conjugate(by.alpha),
                                     rows(1, i), ldb, rows(0, j), lda, T(1), result, ldc);
                    });
                });
        },
        uplo, trans, n, k, a, lda, b, ldb, c, ldc);
}

// trmm and trsm, in place: product(tile, A, the tile of B).
template <class T, class Product>
void triangular(const char* name, char side, char uplo, char transa, char diag, int m, int n,
                T alpha, const T* a, int lda, T* b, int ldb, const Product& product) {
    const Update<T> by(alpha, T(0));
    blasCall<T>(
        name, platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
        sidedTiles<T>(side, m, n),
        [=](auto operand, const Tile& t) {
            T* const result = at(operand[1], ldb, t.i, t.j);
            by.apply('A', t.m, t.n, result, ldb, [&] { product(t, operand[0], result); });
        },
        side, uplo, transa, diag, m, n, a, lda, b, ldb);
}

template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    triangular(Names<T>::trmm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb,
               [=](const Tile& t, const T* triangle, T* result) {
                   cpu::trmm<T>(side, uplo, transa, diag, t.m, t.n, alpha, triangle, lda, result,
                                ldb);
               });
}

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda,
          T* b, int ldb) {
    triangular(Names<T>::trsm, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb,
               [=](const Tile& t, const T* triangle, T* result) {
                   TriangularSolve<T>{side,  uplo,     transa, diag,   t.m, t.n,
                                      alpha, triangle, lda,    result, ldb}
                       .run();
               });
}

}  // namespace software
