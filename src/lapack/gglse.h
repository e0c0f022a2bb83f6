// Equality-constrained least squares (LAPACK xGGLSE).
#pragma once

namespace lumo {

// The device routine behind lumoSgglse and lumoCgglse (lumo.h has the contract) for all element
// types. Device memory: as told there.
template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x);

}  // namespace lumo
