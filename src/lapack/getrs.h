// Solution of a linear system from its LU factors (LAPACK xGETRS).
#pragma once

#include <optional>

#include "basic/PermuteRows/PermuteRows.h"

namespace lumo {

// B := A^-1 B for n x nrhs device right-hand sides, from the factors and pivots (host memory)
// that getrf left. Argument errors: -1: trans not of "NTC"; -2: n < 0; -3: nrhs < 0;
// -5: lda < max(1, n); -8: ldb < max(1, n); and for n and nrhs > 0 -4, -6, -7: null a, ipiv, b.
// Only trans "N" is implemented; the others throw FeatNotImplException.
template <class T>
void getrs(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb);

// The same without checks, in two steps, so that memory can be had before anything is factorised.
template <class T>
class LuSolve {
  public:
    LuSolve(int n, int nrhs);
    void run(const T* a, int lda, const int* ipiv, T* b, int ldb) const;

  private:
    int n_, nrhs_;
    std::optional<RowPermutation<T>> permutation_;  // on a modern device
};

}  // namespace lumo
