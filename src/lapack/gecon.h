// Reciprocal condition numbers from LU factors (LAPACK xGECON).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

// The estimate goes to host memory.
template <class T>
struct Gecon {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char norm;
    int n;
    const T* a;
    int lda;
    RealOf<T> anorm;
    RealOf<T>* rcond;

    template <class F>
    auto arguments(F f) const {
        return f(norm, n, a, lda, anorm, rcond);
    }
    int badArgument() {
        norm = upper(norm);
        if (!isOneOf(norm, "1OI")) return 1;
        if (n < 0) return 2;
        if (lda < std::max(1, n)) return 4;
        if (!(anorm >= 0)) return 5;
        return n > 0 && !a ? 3 : !rcond ? 6 : 0;
    }
    bool empty() const { return false; }
    template <class F>
    auto operands(F f) {
        return f(matrix(a, lda, n, n, Access::in));
    }
    void run() const;
};

}  // namespace lumo
