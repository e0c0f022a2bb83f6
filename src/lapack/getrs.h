// Solution of a linear system from its LU factors (LAPACK xGETRS).
#pragma once

namespace lumo {

// B := A^-1 B for n x nrhs device right-hand sides, from the factors and pivots (host memory)
// that getrf left. Argument errors: -1: trans not of "NTC"; -2: n < 0; -3: nrhs < 0;
// -5: lda < max(1, n); -8: ldb < max(1, n); and for n and nrhs > 0 -4, -6, -7: null a, ipiv, b.
// Only trans "N" is implemented; the others throw FeatNotImplException.
template <class T>
void getrs(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb);

}  // namespace lumo
