// Products with the Q of a QR factorisation (LAPACK xORMQR, xUNMQR).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Ormqr {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char side, trans;
    int m, n, k;
    const T* a;
    int lda;
    const T* tau;
    T* c;
    int ldc;

    template <class F>
    auto arguments(F f) const {
        return f(side, trans, m, n, k, a, lda, tau, c, ldc);
    }
    int badArgument() {
        side = upper(side);
        trans = upper(trans);
        if (!isOneOf(side, "LR")) return 1;
        if (!isOneOf(trans, isComplex<T> ? "NC" : "NTC")) return 2;
        if (m < 0) return 3;
        if (n < 0) return 4;
        if (k < 0 || k > order()) return 5;
        if (lda < std::max(1, order())) return 7;
        if (ldc < std::max(1, m)) return 10;
        if (empty()) return 0;
        return !a ? 6 : !tau ? 8 : !c ? 9 : 0;
    }
    bool empty() const { return m == 0 || n == 0 || k == 0; }
    template <class F>
    auto operands(F f) {
        return f(matrix(a, lda, order(), k, Access::in), adjacent(tau, k, Access::in),
                 matrix(c, ldc, m, n, Access::inOut));
    }
    void run() const;

  private:
    int order() const { return side == 'L' ? m : n; }
};

}  // namespace lumo
