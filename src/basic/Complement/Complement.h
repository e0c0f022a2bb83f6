// The complement to one, in device memory.
#pragma once

namespace lumo {

// y := 1 - x, element by element. Nothing unless n > 0, incx >= 1 and incy >= 1. y may be x.
template <class T>
void complementVector(int n, const T* x, int incx, T* y, int incy);

// *y := 1 - *x.
template <class T>
void complementElement(const T* x, T* y);

}  // namespace lumo
