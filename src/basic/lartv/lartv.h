// Plane rotations of the elements of two vectors in device memory (LAPACK xLARTV).
#pragma once

#include "common/complex.h"

namespace lumo {

// (x(i), y(i)) := (c(i) x(i) + s(i) y(i), c(i) y(i) - conj(s(i)) x(i)) for n pairs, increments
// incx, incy and, of c and s, incc. The cosines are real, the sines of type T.
//
// Argument errors: -1: n < 0; and for n > 0 -2: null x; -3: incx < 1; -4: null y; -5: incy < 1;
// -6, -7: null c, s; -8: incc < 1.
template <class T>
void lartv(int n, T* x, int incx, T* y, int incy, const RealOf<T>* c, const T* s, int incc);

}  // namespace lumo
