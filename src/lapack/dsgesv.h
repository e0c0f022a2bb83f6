// Linear systems in double precision by LU factorisation in single precision (LAPACK DSGESV,
// ZCGESV).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

// The pivots and the number of steps go to host or to device memory, wherever `ipiv` and `iter`
// point.
template <class T>
struct Dsgesv {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int n, nrhs;
    T* a;
    int lda;
    int* ipiv;
    const T* b;
    int ldb;
    T* x;
    int ldx;
    int* iter;

    template <class F>
    auto arguments(F f) const {
        return f(n, nrhs, a, lda, ipiv, b, ldb, x, ldx, iter);
    }
    int badArgument() const {
        if (n < 0) return 1;
        if (nrhs < 0) return 2;
        if (lda < std::max(1, n)) return 4;
        if (ldb < std::max(1, n)) return 7;
        if (ldx < std::max(1, n)) return 9;
        if (n > 0 && (!a || !ipiv)) return !a ? 3 : 5;
        if (n > 0 && nrhs > 0 && (!b || !x)) return !b ? 6 : 8;
        return !iter ? 10 : 0;
    }
    bool empty() const { return false; }
    // A stays as it is where single precision will do.
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, n, n, Access::scratch), matrix(b, ldb, n, nrhs, Access::in),
                 matrix(x, ldx, n, nrhs, Access::out), staying(ipiv, n, Access::out),
                 staying(iter, 1, Access::out));
    }
    void run() const;
};

}  // namespace lumo
