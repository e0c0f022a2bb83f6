// Triangular systems with a test for singularity (LAPACK xTRTRS).
#pragma once

namespace lumo {

// B := op(A)^-1 B for n x nrhs device right-hand sides and a triangular device matrix of order n;
// letters in either case. Argument errors: -1: uplo not of "UL"; -2: trans not of "NTC"; -3: diag
// not of "NU"; -4: n < 0; -5: nrhs < 0; -7: lda < max(1, n); -9: ldb < max(1, n). A diagonal
// element that is exactly zero (diag "N"), first at the 1-based position i, is the data error i,
// and B is as it was.
template <class T>
void trtrs(char uplo, char trans, char diag, int n, int nrhs, const T* a, int lda, T* b, int ldb);

}  // namespace lumo
