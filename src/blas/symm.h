// Products with a symmetric matrix, or a Hermitian one where it is complex: symm and hemm.
#pragma once

#include "routine/description.h"

namespace lumo {

// C := alpha A B + beta C, or with B A. Complex symm multiplies by a Hermitian matrix, as hemm
// does.
template <class T>
struct Symm {
    using Element = T;
    static constexpr Family family = Family::blas;
    char side, uplo;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    template <class F>
    auto arguments(F f) const {
        return f(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
    }
    int badArgument() {
        side = upper(side);
        uplo = upper(uplo);
        if (!isOneOf(side, "LR")) return 1;
        if (!isOneOf(uplo, "UL")) return 2;
        if (m < 0) return 3;
        if (n < 0) return 4;
        if (lda < order()) return 7;
        if (ldb < m) return 9;
        if (ldc < m) return 12;
        if (empty()) return 0;
        return !a ? 6 : !b ? 8 : !c ? 11 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        return f(matrix(a, lda, order(), order(), Access::in), matrix(b, ldb, m, n, Access::in),
                 matrix(c, ldc, m, n, resultOf(beta)));
    }
    void run() const;

  private:
    bool left() const { return side == 'L'; }
    int order() const { return left() ? m : n; }
    template <class P>
    P* slice(P* p, int ld, int j) const;
    void addOffDiagonal(int j, int width, int p, int count) const;
};

}  // namespace lumo
