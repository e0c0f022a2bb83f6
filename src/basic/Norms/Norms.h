// Norms of the rows and of the columns of a device matrix.
#pragma once

#include "common/complex.h"

namespace lumo {

// sums(i) := the sum of |a(i, j)| of an m x n matrix; the largest is its infinity norm.
template <class T>
void rowSums(int m, int n, const T* a, int lda, RealOf<T>* sums);

// maxima(j) := the largest |Re a(i, j)| + |Im a(i, j)|; not a number if one of them is not.
template <class T>
void columnMaxima(int m, int n, const T* a, int lda, RealOf<T>* maxima);

// The same of the lower triangle of a matrix of order n, without imaginary parts on the diagonal.
template <class T>
void hermitianMaxima(int n, const T* a, int lda, RealOf<T>* maxima);

}  // namespace lumo
