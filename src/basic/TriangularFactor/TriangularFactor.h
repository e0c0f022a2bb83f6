// The triangular factor of a block of Householder reflectors from their Gram matrix.
#pragma once

namespace lumo {

// T of H = I - V T V^H for `count` reflectors (LAPACK's xLARFT), all of it: upper triangular where
// the first reflector is the first factor of H (`forward`), else lower triangular, with zeros in
// the other triangle. gram: V^H V, of which T's triangle without the diagonal is read; tau: the
// scalar factors; all in device memory. T does not overlap them. Nothing if count < 1.
template <class T>
void triangularFactor(bool forward, int count, const T* gram, int ldgram, const T* tau, T* t,
                      int ldt);

}  // namespace lumo
