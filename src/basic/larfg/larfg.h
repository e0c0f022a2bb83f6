// Generation of a Householder reflector in device memory (LAPACK xLARFG).
#pragma once

#include "lumo.h"

namespace lumo {

// H = I - tau (1, v) (1, v)^H with H^H (alpha, x) = (beta, 0) and beta real: alpha := beta, x := v,
// of n - 1 elements with stride incx. tau = 0, and nothing else changes, if x is zero and alpha is
// real. All pointers lead to device memory; the launch does not wait.
//
// Argument errors, in this order: -1: n < 0; -5: null tau, also where n is 0; and for n > 0
// -2, -3: null alpha, x; -4: incx < 0.
template <class T>
void larfg(int n, T* alpha, T* x, int incx, T* tau);

// The same as a call of its own, in the frame of a device routine.
template <class T>
lumoStatus deviceLarfg(int n, T* alpha, T* x, int incx, T* tau);

}  // namespace lumo
