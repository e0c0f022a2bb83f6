// Least squares under linear constraints by a generalized RQ factorisation (LAPACK xGGLSE).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Gglse {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int m, n, p;
    T* a;
    int lda;
    T* b;
    int ldb;
    T *c, *d, *x;

    template <class F>
    auto arguments(F f) const {
        return f(m, n, p, a, lda, b, ldb, c, d, x);
    }
    // A negative n fails the second test: it is never the bad argument.
    int badArgument() const {
        if (m < 0) return 1;
        if (!(n >= p && p >= 0 && long(n) - m <= p)) return 3;
        if (lda < std::max(1, m)) return 5;
        if (ldb < std::max(1, p)) return 7;
        if (empty()) return 0;
        if (!a) return 4;
        if (!b && p > 0) return 6;
        if (!c) return 8;
        if (!d && p > 0) return 9;
        return !x ? 10 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n), matrix(b, ldb, p, n, Access::inOut),
                 adjacent(c, m, Access::inOut), adjacent(d, p, Access::inOut),
                 adjacent(x, n, Access::out));
    }
    void prepareCopies() const;
    void run() const;
};

}  // namespace lumo
