// Least squares and minimum-norm solutions by QR or LQ (LAPACK xGELS, without its scaling).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Gels {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char trans;
    int m, n, nrhs;
    T* a;
    int lda;
    T* b;
    int ldb;

    template <class F>
    auto arguments(F f) const {
        return f(trans, m, n, nrhs, a, lda, b, ldb);
    }
    int badArgument() {
        trans = upper(trans);
        if (!isOneOf(trans, "NTC")) return 1;
        if (m < 0) return 2;
        if (n < 0) return 3;
        if (nrhs < 0) return 4;
        if (lda < std::max(1, m)) return 6;
        if (ldb < std::max({1, m, n})) return 8;
        if (!hasSystem()) return 0;
        return !a ? 5 : !b ? 7 : 0;
    }
    bool empty() const { return false; }
    // Without a system to solve A is not looked at and may be null.
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n, hasSystem() ? Access::inOut : Access::none),
                 matrix(b, ldb, std::max(m, n), nrhs, Access::inOut));
    }
    void run() const;

  private:
    bool hasSystem() const { return std::min({m, n, nrhs}) > 0; }
};

}  // namespace lumo
