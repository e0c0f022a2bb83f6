// Reduction to bidiagonal form (LAPACK xGEBRD).
#pragma once

#include "common/complex.h"

namespace lumo {

// Q^H A P = B for an m x n device matrix in place: B is upper bidiagonal for m >= n, else lower;
// its diagonals go to d (k = min(m, n) elements) and e (k - 1) and into A, the reflectors of Q and
// P below and above them, their scalar factors to tauq and taup (k). All operands are in device
// memory. Argument errors: -1: m < 0; -2: n < 0; -4: lda < max(1, m).
//
// The device reduces panels and updates what lies right of and below them; the CPU LAPACK reduces
// the last block, which alone travels. Device memory: nb (m + n) + n elements; where the matrix is
// read once a column (tuning.h), twice as much, up to 256 m for partial sums, and m n for a copy of
// a matrix that is wide or whose columns are not aligned.
template <class T>
void gebrd(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup);

}  // namespace lumo
