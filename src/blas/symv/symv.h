// The symmetric matrix-vector product: large ones by a kernel of our own on devices that are fast
// enough, else by CUBLAS.
#pragma once

namespace lumo {

// y := alpha A x + beta y with A of order n on the device, symmetric (also where it is complex), of
// which only triangle `uplo` is referenced. CUBLAS serves n below 1024 and devices of a capability
// below 2.0, and checks its arguments itself; otherwise the argument errors are those of xSYMV: -1:
// uplo; -2: n < 0; -5: lda < max(1, n); -7, -10: an increment of 0.
template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy);

}  // namespace lumo
