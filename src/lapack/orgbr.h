// The orthogonal factors of a bidiagonal reduction as matrices (LAPACK xORGBR, xUNGBR).
#pragma once

namespace lumo {

// Overwrites a device matrix that holds reflectors as gebrd left them with Q (vect "Q") or P^H
// (vect "P"), of which it has m rows and n columns. k: the columns (vect "Q") or rows (vect "P") of
// the matrix that was reduced; m >= n >= min(m, k) for "Q", n >= m >= min(n, k) for "P". Reflectors
// of the second column (row) on, m < k for "Q" and k >= n for "P", need a square matrix. Arguments
// are the caller's to check. Device memory: as orgqr and orglq.
template <class T>
void orgbr(char vect, int m, int n, int k, T* a, int lda, T* tau);

}  // namespace lumo
