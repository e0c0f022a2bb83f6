// Products with a triangular matrix and with its inverse: trmm and trsm.
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

enum class Triangular { product, solution };

// B := alpha op(A) B, or with B op(A); of a solution, with the inverse of op(A).
template <class T, Triangular kind>
struct TriangularOperation {
    using Element = T;
    static constexpr Family family = Family::blas;
    char side, uplo, transa, diag;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    T* b;
    int ldb;

    template <class F>
    auto arguments(F f) const {
        return f(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
    }
    // trmm wants leading dimensions of at least 1, trsm takes 0 for an empty matrix.
    int badArgument() {
        constexpr int least = kind == Triangular::product ? 1 : 0;
        side = upper(side);
        uplo = upper(uplo);
        transa = upper(transa);
        diag = upper(diag);
        if (!isOneOf(side, "LR")) return 1;
        if (!isOneOf(uplo, "UL")) return 2;
        if (!isOneOf(transa, "NTC")) return 3;
        if (!isOneOf(diag, "UN")) return 4;
        if (m < 0) return 5;
        if (n < 0) return 6;
        if (lda < std::max(least, order())) return 9;
        if (ldb < std::max(least, m)) return 11;
        if (empty()) return 0;
        return !a ? 8 : !b ? 10 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        return f(matrix(a, lda, order(), order(), Access::in), matrix(b, ldb, m, n, Access::inOut));
    }
    void run() const;

  private:
    int order() const { return side == 'L' ? m : n; }
};

template <class T>
using Trmm = TriangularOperation<T, Triangular::product>;
template <class T>
using Trsm = TriangularOperation<T, Triangular::solution>;

}  // namespace lumo
