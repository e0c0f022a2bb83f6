// LU factorisation with partial pivoting (LAPACK xGETRF).
#pragma once

#include <algorithm>

#include "lumo.h"
#include "routine/description.h"

namespace lumo {

// The pivots go to host or to device memory, wherever `ipiv` points.
template <class T>
struct Getrf {
    using Element = T;
    static constexpr Family family = Family::lapack;
    int m, n;
    T* a;
    int lda;
    int* ipiv;

    template <class F>
    auto arguments(F f) const {
        return f(m, n, a, lda, ipiv);
    }
    int badArgument() const {
        if (m < 0) return 1;
        if (n < 0) return 2;
        if (lda < std::max(1, m)) return 4;
        if (empty()) return 0;
        return !a ? 3 : !ipiv ? 5 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factorized(a, lda, m, n), adjacent(ipiv, std::min(m, n), Access::out));
    }
    void run() const;
    bool isSmall() const;
    lumoStatus runOnCpu() const;
};

// A = P L U for an m x n device matrix in place; min(m, n) pivots go to ipiv in host memory.
// Returns 0 or the 1-based column of the first exactly zero pivot; the factorisation is complete
// either way. Arguments are the caller's to check; throws for a failure of memory, device or CPU
// LAPACK.
//
// A right-looking blocked algorithm, one panel ahead: the CPU LAPACK factorises a panel while
// the device updates the columns beyond the next one. Large square matrices are factorised
// transposed, where row interchanges are exchanges of whole columns. Device memory: one panel in
// that case, none otherwise.
template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv);

}  // namespace lumo
