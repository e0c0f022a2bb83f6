// Plane rotations from both sides of 2 x 2 matrices in device memory (LAPACK xLAR2V).
#pragma once

#include "common/complex.h"

namespace lumo {

// n symmetric, for a complex T Hermitian, matrices (x(i), z(i); conj(z(i)), y(i)), each rotated by
// its c(i), s(i) from the left and by their transpose from the right; increments incx and incc. The
// cosines are real, the sines of type T. Imaginary parts of x and y are taken for 0.
//
// Argument errors: -1: n < 0; and for n > 0 -2, -3, -4: null x, y, z; -5: incx < 1; -6, -7: null c,
// s; -8: incc < 1.
template <class T>
void lar2v(int n, T* x, T* y, T* z, int incx, const RealOf<T>* c, const T* s, int incc);

}  // namespace lumo
