// Generalized symmetric or Hermitian eigenproblems with a definite matrix (LAPACK xSYGVD, xHEGVD).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

template <class T>
struct Sygvd {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int itype;
    char jobz, uplo;
    int n;
    T* a;
    int lda;
    T* b;
    int ldb;
    RealOf<T>* w;

    template <class F>
    auto arguments(F f) const {
        return f(itype, jobz, uplo, n, a, lda, b, ldb, w);
    }
    int badArgument() {
        jobz = upper(jobz);
        uplo = upper(uplo);
        if (itype < 1 || itype > 3) return 1;
        if (!isOneOf(jobz, "NV")) return 2;
        if (!isOneOf(uplo, "UL")) return 3;
        if (n < 0) return 4;
        if (lda < std::max(1, n)) return 6;
        if (ldb < std::max(1, n)) return 8;
        if (empty()) return 0;
        return !a ? 5 : !b ? 7 : !w ? 9 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        // w stays as it is if B is not definite.
        return f(factorized(a, lda, n, n, jobz == 'V' ? Access::inOut : Access::scratch),
                 triangle(b, ldb, n, Access::inOut), adjacent(w, n, Access::inOut));
    }
    void run() const;
};

}  // namespace lumo
