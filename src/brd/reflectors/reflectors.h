// The Householder reflectors of a bidiagonal panel, each by one block, with all that becomes of it.
#pragma once

#include "common/complex.h"

namespace lumo {

// Of a column: a, `rows` elements, becomes (beta, v), as xGEBRD leaves it; vector (1, v), with
// `lead` zeros before it; beta d. pulled, `count` elements, becomes the vector's row of P, which
// begins at p, negated and conjugated.
template <class T>
void columnReflector(int rows, int lead, T* a, T* vector, RealOf<T>* d, T* tau, int count,
                     const T* p, int ldp, T* pulled);

// Of a row, given conjugated as r, `columns` elements: (e, u^H) goes to a row of A; vector (1, u).
template <class T>
void rowReflector(int columns, const T* r, T* a, int lda, T* vector, RealOf<T>* e, T* tau);

}  // namespace lumo
