// Rank-k updates of one triangle: syrk, and herk of a Hermitian matrix.
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

// C := alpha op(A) op(A)' + beta C, where `transpose`, "T" or "C", is the letter of '.
template <class T, class Scalar, char transpose>
struct RankUpdate {
    using Element = T;
    static constexpr Family family = Family::blas;
    char uplo, trans;
    int n, k;
    Scalar alpha;
    const T* a;
    int lda;
    Scalar beta;
    T* c;
    int ldc;

    template <class F>
    auto arguments(F f) const {
        return f(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
    }
    int badArgument() {
        uplo = upper(uplo);
        trans = upper(trans);
        if (!isOneOf(uplo, "UL")) return 1;
        if (trans != transpose && trans != 'N') return 2;
        if (n < 0) return 3;
        if (k < 0) return 4;
        if (lda < std::max(1, plain() ? n : k)) return 7;
        if (ldc < std::max(1, n)) return 10;
        if (n == 0 || k == 0) return 0;
        return !a ? 6 : !c ? 9 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factor(a, lda, plain(), n, k), triangle(c, ldc, n, resultOf(beta)));
    }
    void run() const;

  private:
    bool plain() const { return trans == 'N'; }
    const T* part(int j) const;
    void update(int j, int width) const;
};

template <class T>
using Syrk = RankUpdate<T, T, 'T'>;
template <class T>
using Herk = RankUpdate<T, RealOf<T>, 'C'>;

}  // namespace lumo
