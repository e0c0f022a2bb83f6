// Solution of a linear system from its LU factors (LAPACK xGETRS).
#pragma once

#include <algorithm>
#include <optional>

#include "basic/PermuteRows/PermuteRows.h"
#include "routine/description.h"

namespace lumo {

// The pivots lie in host or in device memory, wherever `ipiv` points.
template <class T>
struct Getrs {
    using Element = T;
    static constexpr Family family = Family::lapack;
    char trans;
    int n, nrhs;
    const T* a;
    int lda;
    const int* ipiv;
    T* b;
    int ldb;

    template <class F>
    auto arguments(F f) const {
        return f(trans, n, nrhs, a, lda, ipiv, b, ldb);
    }
    int badArgument() {
        trans = upper(trans);
        if (!isOneOf(trans, "NTC")) return 1;
        if (n < 0) return 2;
        if (nrhs < 0) return 3;
        if (lda < std::max(1, n)) return 5;
        if (ldb < std::max(1, n)) return 8;
        if (empty()) return 0;
        return !a ? 4 : !ipiv ? 6 : !b ? 7 : 0;
    }
    bool empty() const { return n == 0 || nrhs == 0; }
    template <class F>
    auto operands(F f) {
        return f(matrix(a, lda, n, n, Access::in), matrix(b, ldb, n, nrhs, Access::inOut),
                 staying(ipiv, n, Access::in));
    }
    void run() const;
};

// B := A^-1 B for n x nrhs device right-hand sides, from the factors and pivots (host memory)
// that getrf left. Argument errors: -1: trans not of "NTC"; -2: n < 0; -3: nrhs < 0;
// -5: lda < max(1, n); -8: ldb < max(1, n); and for n and nrhs > 0 -4, -6, -7: null a, ipiv, b.
// Only trans "N" is implemented; the others throw FeatNotImplException: what the library's own
// routines solve has no other.
template <class T>
void getrs(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb);

// B := op(A)^-1 B without checks, in two steps, so that memory can be had before anything is
// factorised.
template <class T>
class LuSolve {
  public:
    LuSolve(int n, int nrhs, char trans = 'N');
    void run(const T* a, int lda, const int* ipiv, T* b, int ldb) const;

  private:
    int n_, nrhs_;
    char trans_;
    std::optional<RowPermutation<T>> permutation_;  // on a modern device, and to be undone
};

}  // namespace lumo
