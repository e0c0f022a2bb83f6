// Singular value decomposition (LAPACK xGESVD).
#pragma once

#include "runtime/complex.h"

namespace lumo {

// The device routine behind lumoSgesvd and lumoCgesvd (lumo.h has the contract) for all element
// types.
template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, RealOf<T>* s, T* u, int ldu, T* vt,
           int ldvt);

}  // namespace lumo
