// Eigenvalues and eigenvectors of a symmetric or Hermitian matrix by divide and conquer (LAPACK
// xSYEVD, xHEEVD).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

template <class T>
struct Syevd {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char jobz, uplo;
    int n;
    T* a;
    int lda;
    RealOf<T>* w;

    template <class F>
    auto arguments(F f) const {
        return f(jobz, uplo, n, a, lda, w);
    }
    int badArgument() {
        jobz = upper(jobz);
        uplo = upper(uplo);
        if (!isOneOf(jobz, "NV")) return 1;
        if (!isOneOf(uplo, "UL")) return 2;
        if (n < 0) return 3;
        if (lda < std::max(1, n)) return 5;
        if (empty()) return 0;
        return !a ? 4 : !w ? 6 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, n, n, jobz == 'V' ? Access::inOut : Access::scratch),
                 adjacent(w, n, Access::out));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;
};

}  // namespace lumo
