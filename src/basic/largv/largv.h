// Generation of plane rotations in device memory (LAPACK xLARGV).
#pragma once

#include "common/complex.h"

namespace lumo {

// Rotations (c(i), s; -conj(s), c(i)) (x(i), y(i)) = (r, 0) with real c(i), for n pairs: x(i) := r,
// y(i) := s; increments incx, incy and, of c, incc.
//
// Argument errors: -1: n < 0; and for n > 0 -2: null x; -3: incx < 1; -4: null y; -5: incy < 1;
// -6: null c; -7: incc < 1.
template <class T>
void largv(int n, T* x, int incx, T* y, int incy, RealOf<T>* c, int incc);

}  // namespace lumo
