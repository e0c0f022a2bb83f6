// LU factorisation with partial pivoting (LAPACK xGETRF).
#pragma once

namespace lumo {

// Raises the argument errors of getrf: -1: m < 0; -2: n < 0; -4: lda < max(1, m); and for m and
// n > 0 -3: null a, -5: null ipiv.
void checkGetrf(int m, int n, const void* a, int lda, const int* ipiv);

// A = P L U for an m x n device matrix in place; min(m, n) pivots go to ipiv in host memory.
// Returns 0 or the 1-based column of the first exactly zero pivot; the factorisation is complete
// either way. Checks its arguments; throws for a failure of memory, device or CPU LAPACK.
//
// A right-looking blocked algorithm, one panel ahead: the CPU LAPACK factorises a panel while
// the device updates the columns beyond the next one. Large square matrices are factorised
// transposed, where row interchanges are exchanges of whole columns. Device memory: one panel in
// that case, none otherwise.
template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv);

}  // namespace lumo
