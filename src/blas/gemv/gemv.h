// The matrix-vector product as the algorithms of the library use it: transposed by a kernel of our
// own, which is fast on the tall and narrow operands of panel reductions, else by CUBLAS. The
// exports are in blas/gemv.cpp and always CUBLAS's.
#pragma once

namespace lumo {

// y := alpha op(A) x + beta y with A m x n on the device, op "N", "T" or "C". The kernel serves "T"
// and "C" with positive increments. Nothing is launched if m or n is 0, or if alpha is 0 and beta
// is 1. Where beta is 0 y need not hold numbers.
//
// Argument errors as in xGEMV: -1: trans; -2: m < 0; -3: n < 0; -6: lda < max(1, m); -8, -11: an
// increment of 0.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta,
          T* y, int incy);

}  // namespace lumo
