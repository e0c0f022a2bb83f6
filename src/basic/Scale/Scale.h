// Scaling a vector by a number that is in device memory itself.
#pragma once

namespace lumo {

// x := x * *alpha for a flag that is not 0, x := x / *alpha otherwise. *alpha is no element of x.
// Nothing unless n > 0 and incx >= 1.
template <class T>
void scale(int n, T* x, const T* alpha, int incx, int flag);

}  // namespace lumo
