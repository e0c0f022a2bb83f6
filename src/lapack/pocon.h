// Reciprocal condition numbers from Cholesky factors (LAPACK xPOCON).
#pragma once

#include <algorithm>

#include "routine/description.h"

namespace lumo {

// The estimate goes to host memory.
template <class T>
struct Pocon {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char uplo;
    int n;
    const T* a;
    int lda;
    RealOf<T> anorm;
    RealOf<T>* rcond;

    template <class F>
    auto arguments(F f) const {
        return f(uplo, n, a, lda, anorm, rcond);
    }
    int badArgument() {
        uplo = upper(uplo);
        if (!isOneOf(uplo, "UL")) return 1;
        if (n < 0) return 2;
        if (lda < std::max(1, n)) return 4;
        if (!(anorm >= 0)) return 5;
        return n > 0 && !a ? 3 : !rcond ? 6 : 0;
    }
    bool empty() const { return false; }
    template <class F>
    auto operands(F f) {
        return f(triangle(a, lda, n, Access::in));
    }
    void run() const;
};

}  // namespace lumo
