// Cholesky factorisation (LAPACK xPOTRF).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

template <class T>
struct Potrf {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char uplo;
    int n;
    T* a;
    int lda;

    template <class F>
    auto arguments(F f) const {
        return f(uplo, n, a, lda);
    }
    int badArgument() {
        uplo = upper(uplo);
        if (!isOneOf(uplo, "UL")) return 1;
        if (n < 0) return 2;
        if (lda < std::max(1, n)) return 4;
        return !empty() && !a ? 3 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(triangle(a, lda, n, Access::inOut));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;
};

// A = U^H U (uplo "U") or L L^H ("L") in the triangle `uplo` of a device matrix of order n. Returns
// 0 or the order of the first leading minor that is not positive, where it stops. Arguments are the
// caller's to check; throws for a failure of memory, device or CPU LAPACK.
//
// Right-looking by blocks: the CPU LAPACK factorises a block of the diagonal while the device
// updates what lies beyond the next one. Device memory: none.
template <class T>
int potrf(char uplo, int n, T* a, int lda);

}  // namespace lumo
