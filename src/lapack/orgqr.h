// The Q of a QR factorisation as a matrix (LAPACK xORGQR, xUNGQR).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Orgqr {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int m, n, k;
    T* a;
    int lda;
    const T* tau;

    template <class F>
    auto arguments(F f) const {
        return f(m, n, k, a, lda, tau);
    }
    int badArgument() const {
        if (m < 0) return 1;
        if (n < 0 || n > m) return 2;
        if (k < 0 || k > n) return 3;
        if (lda < std::max(1, m)) return 5;
        if (empty()) return 0;
        return !a ? 4 : k > 0 && !tau ? 6 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n), adjacent(tau, k, Access::in));
    }
    void run() const;
};

}  // namespace lumo
