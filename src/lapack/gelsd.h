// Minimum-norm least squares for matrices of any rank, by the singular value decomposition (LAPACK
// xGELSD).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

// The rank goes to host memory.
template <class T>
struct Gelsd {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int m, n, nrhs;
    T* a;
    int lda;
    T* b;
    int ldb;
    RealOf<T>* s;
    RealOf<T> rcond;
    int* rank;

    template <class F>
    auto arguments(F f) const {
        return f(m, n, nrhs, a, lda, b, ldb, s, rcond, rank);
    }
    int badArgument() {
        if (m < 0) return 1;
        if (n < 0) return 2;
        if (nrhs < 0) return 3;
        if (lda < std::max(1, m)) return 5;
        if (ldb < std::max({1, m, n})) return 7;
        if (hasMatrix() && !a) return 4;
        if (!b && nrhs > 0 && std::max(m, n) > 0) return 6;
        return hasMatrix() && !s ? 8 : !rank ? 10 : 0;
    }
    bool empty() const { return false; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n, hasMatrix() ? Access::scratch : Access::none),
                 matrix(b, ldb, std::max(m, n), nrhs, Access::inOut),
                 adjacent(s, std::min(m, n), Access::out), staying(rank, 1, Access::out));
    }
    void run() const;

  private:
    bool hasMatrix() const { return std::min(m, n) > 0; }
};

}  // namespace lumo
