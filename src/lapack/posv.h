// Positive definite linear systems by Cholesky factorisation (LAPACK xPOSV).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

template <class T>
struct Posv {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char uplo;
    int n, nrhs;
    T* a;
    int lda;
    T* b;
    int ldb;

    template <class F>
    auto arguments(F f) const {
        return f(uplo, n, nrhs, a, lda, b, ldb);
    }
    int badArgument() {
        uplo = upper(uplo);
        if (!isOneOf(uplo, "UL")) return 1;
        if (n < 0) return 2;
        if (nrhs < 0) return 3;
        if (lda < std::max(1, n)) return 5;
        if (ldb < std::max(1, n)) return 7;
        if (empty()) return 0;
        return !a ? 4 : !b ? 6 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(triangle(a, lda, n, Access::inOut), matrix(b, ldb, n, nrhs, Access::inOut));
    }
    void run() const;
};

}  // namespace lumo
