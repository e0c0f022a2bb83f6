// Linear systems by LU (LAPACK xGESV).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

// The pivots go to host or to device memory, wherever `ipiv` points.
template <class T>
struct Gesv {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int n, nrhs;
    T* a;
    int lda;
    int* ipiv;
    T* b;
    int ldb;

    template <class F>
    auto arguments(F f) const {
        return f(n, nrhs, a, lda, ipiv, b, ldb);
    }
    int badArgument() const {
        if (n < 0) return 1;
        if (nrhs < 0) return 2;
        if (lda < std::max(1, n)) return 4;
        if (ldb < std::max(1, n)) return 7;
        if (empty()) return 0;
        return !a ? 3 : !ipiv ? 5 : !b ? 6 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, n, n), matrix(b, ldb, n, nrhs, Access::inOut),
                 adjacent(ipiv, n, Access::out));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;
};

}  // namespace lumo
