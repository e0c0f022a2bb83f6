// Conjugation in place, in device memory.
#pragma once

namespace lumo {

// x := conj(x), which is x itself for a real T. Nothing unless n >= 1 and incx >= 1.
template <class T>
void conjugateVector(int n, T* x, int incx);

// The same for an m x n matrix, or its lower triangle with the diagonal; T is complex. Nothing
// unless m >= 1, n >= 1 and lda >= 1.
template <class T>
void conjugateMatrix(int m, int n, T* a, int lda);
template <class T>
void conjugateMatrixLower(int m, int n, T* a, int lda);

}  // namespace lumo
