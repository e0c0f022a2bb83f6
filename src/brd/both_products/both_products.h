// Both products of a bidiagonal reduction's step with the matrix, which is read once.
#pragma once

#include "common/complex.h"

namespace lumo {

// The most parts that sums over so many columns are made in.
template <class T>
int mostParts(int columns);

// A matrix A - P W^H, of which A (rows x columns) and W (columns x count) are given, is multiplied
// from the left by a reflector, I - tau v v^H, and then from the right by its own first row. With
// t = -P^H v and c the first row of P, negated and conjugated:
//
//     y = tau (A^H v + W t)             which becomes column `count` of W,
//     r = A(lead, :)^H + W c - y           the new first row, conjugated,
//     A r                               as the sum of parts, columns of `parts`.
//
// The first row is row `lead` of A. Those above it, for which v is 0, are there to begin where
// memory is aligned; of A r they are nobody's.
//
// Column j of A is multiplied by r(j) as soon as r(j) is known, while it is in the cache: the
// operator GEMVT of Howell, Demmel, Fulton, Hammarling and Marmolejo, Cache efficient
// bidiagonalization using BLAS 2.5 operators, ACM TOMS 34, 2008.
//
// Returns how many parts there are, which does not depend on the number of threads or
// multiprocessors, nor do the results.
template <class T>
int bothProducts(int rows, int lead, int columns, int count, const T* a, int lda, T* w, int ldw,
                 const T* v, const T* t, const T* c, const T* tau, T* r, T* parts, int ldparts);

}  // namespace lumo
