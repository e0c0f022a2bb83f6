// From the products of a bidiagonal reduction's step to its next column.
#pragma once

#include "common/complex.h"

namespace lumo {

// A matrix A - P W^H (A rows x columns, P rows x count, W columns x count) is multiplied from the
// right by a reflector, I - tau u u^H, made of (r, e): u is column `count` of W. Column `count` of
// P becomes x = tau (A - P W^H) u, and with `update` column 0 of A the product's, (A - P W^H - x
// u^H) e1.
//
// With s = r / e = e1 - tau u the latter is (A - P W^H) s, and x is the former minus it; so that of
// A r, as bothProducts leaves it, and heads = W^H r nothing has to be multiplied by u. Where e is
// so small, or the products so large, that they have lost their digits, s is multiplied by anew.
template <class T>
void nextColumn(int rows, int columns, int count, T* a, int lda, const T* w, int ldw, T* p, int ldp,
                const T* heads, const T* parts, int ldparts, int partCount, const RealOf<T>* e,
                const T* tau, bool update);

}  // namespace lumo
