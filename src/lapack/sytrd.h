// Reduction of a symmetric or Hermitian matrix to tridiagonal form (LAPACK xSYTRD, xHETRD).
#pragma once

#include "common/complex.h"

namespace lumo {

// Q^H A Q = T for a device matrix of order n of which the lower triangle is known, in place: the
// diagonals of T go to d (n elements) and e (n - 1) and into A, the n - 1 reflectors of Q below
// them, as a QR factorisation's of rows 1, ..., n - 1; their scalar factors go to tau. The upper
// triangle is neither read nor written, nor is an imaginary part on the diagonal read. All operands
// are in device memory; arguments are the caller's to check.
//
// By panels: half of the work is in products of what is left with a vector, the other half in its
// updates. Nothing waits for the device. Device memory: 2 n nb
// elements, and what the product with what is left takes.
template <class T>
void sytrd(int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tau);

}  // namespace lumo
