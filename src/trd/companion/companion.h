// The second vector of a rank-two update.
#pragma once

namespace lumo {

// Of a reflector H = I - tau v v^H and w = A v for a Hermitian A of order n, w becomes the vector
// for which H^H A H = A - v w^H - w v^H: tau w - (tau / 2) (tau w, v) v. Then row, `count`
// elements, becomes the conjugate of the first row of the matrix p, of which w may be a column. All
// in device memory.
template <class T>
void companion(int n, const T* tau, const T* v, T* w, int count, const T* p, int ldp, T* row);

}  // namespace lumo
