// QR factorisation (LAPACK xGEQRF).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Geqrf {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int m, n;
    T* a;
    int lda;
    T* tau;

    template <class F>
    auto arguments(F f) const {
        return f(m, n, a, lda, tau);
    }
    int badArgument() const {
        if (m < 0) return 1;
        if (n < 0) return 2;
        if (lda < std::max(1, m)) return 4;
        if ((m <= 1 && n <= 1) || empty()) return 0;
        return !a ? 3 : !tau ? 5 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n), adjacent(tau, std::min(m, n), Access::out));
    }
    void run() const;
};

}  // namespace lumo
