// Least squares and minimum-norm solutions (LAPACK xGELS).
#pragma once

namespace lumo {

// The device routine behind lumoSgels and lumoCgels (lumo.h has the contract) for all element
// types. Device memory: as told there.
template <class T>
void gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb);

}  // namespace lumo
