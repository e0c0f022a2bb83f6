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
        productTiles(type, m, n, double(m) * n * k, Tiles::Cut::both),
        [=](auto routines, auto operand, const Tile& t) {
            void* const result = at(type, operand[2], t.i, t.j, ldc);
            by.apply('A', t.m, t.n, result, ldc, [&] {
                routines.gemm(transa, transb, t.m, t.n, by.k, by.alpha.bytes,
                              atOf(type, transa, operand[0], t.i, 0, lda), lda,
                              atOf(type, transb, operand[1], 0, t.j, ldb), ldb, by.beta.bytes,
                              result, ldc);
            });
        },
        transa, transb, m, n, k, a, lda, b, ldb, c, ldc);
}

// What an operation with a square matrix on one side leaves to cut: the other side's extent. Each
// tile packs the whole square, so there are few.
Tiles sidedTiles(char type, char side, int m, int n) {
    const bool left = platform::oneOf(side, "L");
    return productTiles(type, m, n, double(m) * n * (left ? m : n),
                        left ? Tiles::Cut::columns : Tiles::Cut::rows, 1);
}

void symm(char type, char side, char uplo, int m, int n, const void* alpha, const void* a, int lda,
          const void* b, int ldb, const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)});
    blasCall(
        type, platform::isComplex(type) ? "hemm" : "symm",
        platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc),
        sidedTiles(type, side, m, n),
        [=](auto routines, auto operand, const Tile& t) {
            void* const result = at(type, operand[2], t.i, t.j, ldc);
            by.apply('A', t.m, t.n, result, ldc, [&] {
                routines.symm(side, uplo, t.m, t.n, by.alpha.bytes, operand[0], lda,
                              at(type, operand[1], t.i, t.j, ldb), ldb, by.beta.bytes, result, ldc);
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
Tiles triangleTiles(char type, int n, double multiplications) {
    return productTiles(type, n, n, multiplications, Tiles::Cut::columns);
}

// syrk and herk, which differ in the letter of A's other occurrence and in their routine on the
// diagonal.
template <class OnDiagonal>
void rankUpdate(char type, const char* name, char uplo, char trans, const char* transposes, int n,
                int k, const Update& by, const void* a, int lda, void* c, int ldc,
                OnDiagonal onDiagonal) {
    blasCall(
        type, name, platform::syrkOperands(uplo, trans, transposes, n, k, a, lda, c, ldc),
        triangleTiles(type, n, 0.5 * n * n * k),
        [=](auto routines, auto operand, const Tile& t) {
            auto rows = [&](int i) { return atOf(type, trans, operand[0], i, 0, lda); };
            const bool plain = platform::oneOf(trans, "N");
            const char other = *transposes;
            eachOfTriangle(
                uplo, n, t,
                [&](int j, int order) {
                    void* const result = at(type, operand[1], j, j, ldc);
                    by.apply(uplo, order, order, result, ldc,
                             [&] { onDiagonal(routines, order, rows(j), result); });
                },
                [&](int i, int m, int j, int columns) {
                    void* const result = at(type, operand[1], i, j, ldc);
                    by.apply('A', m, columns, result, ldc, [&] {
                        routines.gemm(plain ? 'N' : other, plain ? other : 'N', m, columns, by.k,
                                      by.alpha.bytes, rows(i), lda, rows(j), lda, by.beta.bytes,
                                      result, ldc);
                    });
                });
        },
        uplo, trans, n, k, a, lda, c, ldc);
}

void syrk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, elementSize(type)}, k);
    rankUpdate(type, "syrk", uplo, trans, platform::syrkTransposes(type), n, k, by, a, lda, c, ldc,
               [=](auto routines, int order, const void* rows, void* result) {
                   routines.syrk(uplo, trans, order, by.k, by.alpha.bytes, rows, lda, by.beta.bytes,
                                 result, ldc);
               });
}

// The real scalars are those of a complex product with imaginary parts of zero.
void herk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, realSize(type)}, {beta, realSize(type)}, k);
    rankUpdate(type, "herk", uplo, trans, "C", n, k, by, a, lda, c, ldc,
               [=](auto routines, int order, const void* rows, void* result) {
                   routines.herk(uplo, trans, order, by.k, by.alpha.bytes, rows, lda, by.beta.bytes,
                                 result, ldc);
               });
}

void syr2k(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
           int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
    const Update by(type, {alpha, elementSize(type)}, {beta, realSize(type)}, k);
    const char* const transposes = platform::syr2kTransposes(type);
    blasCall(
        type, platform::isComplex(type) ? "her2k" : "syr2k",
        platform::syr2kOperands(uplo, trans, transposes, n, k, a, lda, b, ldb, c, ldc),
        triangleTiles(type, n, double(n) * n * k),
        [=](auto routines, auto operand, const Tile& t) {
            auto rows = [&](int which, int i) {
                return atOf(type, trans, operand[which], i, 0, which ? ldb : lda);
            };
            const bool plain = platform::oneOf(trans, "N");
            const char first = plain ? 'N' : *transposes, second = plain ? *transposes : 'N';
            eachOfTriangle(
                uplo, n, t,
                [&](int j, int order) {
                    void* const result = at(type, operand[2], j, j, ldc);
                    by.apply(uplo, order, order, result, ldc, [&] {
                        routines.syr2k(uplo, trans, order, by.k, by.alpha.bytes, rows(0, j), lda,
                                       rows(1, j), ldb, by.beta.bytes, result, ldc);
                    });
                },
                [&](int i, int m, int j, int columns) {
                    void* const result = at(type, operand[2], i, j, ldc);
                    by.apply('A', m, columns, result, ldc, [&] {
                        const Scalar one = Scalar::one(type), conjugate = by.alpha.conjugate(type);
                        routines.gemm(first, second, m, columns, by.k, by.alpha.bytes, rows(0, i),
                                      lda, rows(1, j), ldb, by.beta.bytes, result, ldc);
                        routines.gemm(first, second, m, columns, by.k, conjugate.bytes, rows(1, i),
                                      ldb, rows(0, j), lda, one.bytes, result, ldc);
                    });
                });
        },
        uplo, trans, n, k, a, lda, b, ldb, c, ldc);
}

void trmm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    const Update by(type, {alpha, elementSize(type)}, {});
    blasCall(
        type, "trmm", platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
        sidedTiles(type, side, m, n),
        [=](auto routines, auto operand, const Tile& t) {
            void* const result = at(type, operand[1], t.i, t.j, ldb);
            by.apply('A', t.m, t.n, result, ldb, [&] {
                routines.trmm(side, uplo, transa, diag, t.m, t.n, by.alpha.bytes, operand[0], lda,
                              result, ldb);
            });
        },
        side, uplo, transa, diag, m, n, a, lda, b, ldb);
}

template <class T>
void solveTriangular(blas::Routines<T>, char side, char uplo, char transa, char diag, int m, int n,
                     const Scalar& alpha, const void* a, int lda, void* b, int ldb) {
    T by;
    std::memcpy(&by, alpha.bytes, sizeof by);
    const auto* factor = static_cast<const T*>(a);
    TriangularSolve<T>{side, uplo, transa, diag, m, n, by, factor, lda, static_cast<T*>(b), ldb}
        .run();
}

void trsm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    const Update by(type, {alpha, elementSize(type)}, {});
    blasCall(
        type, "trsm", platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb),
        sidedTiles(type, side, m, n),
        [=](auto routines, auto operand, const Tile& t) {
            void* const result = at(type, operand[1], t.i, t.j, ldb);
            by.apply('A', t.m, t.n, result, ldb, [&] {
                solveTriangular(routines, side, uplo, transa, diag, t.m, t.n, by.alpha, operand[0],
                                lda, result, ldb);
            });
        },
        side, uplo, transa, diag, m, n, a, lda, b, ldb);
}

}  // namespace software
