// Reduction of a generalized symmetric or Hermitian eigenproblem to a standard one (LAPACK xSYGST,
// xHEGST).
#pragma once

namespace lumo {

// A := L^-1 A L^-H for itype 1, L^H A L for 2 and 3, in the lower triangle of a device matrix of
// order n; L: the Cholesky factor of B, in the lower triangle of b. Arguments are the caller's to
// check.
//
// By halves: half the operations that a whole A would take, and most of them in large products.
// Device memory: 2 k^2 elements, k = min(n, sygstLeaf).
template <class T>
void sygst(int itype, int n, T* a, int lda, const T* b, int ldb);

}  // namespace lumo
