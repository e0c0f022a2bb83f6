// LU factorisation for devices that are much faster than the CPU and the way to it.
#pragma once

namespace lumo {

// As getrf (lapack/getrf.h), in panels of nb columns, nb < min(m, n). The CPU LAPACK factorises a
// panel while the device still updates what lies beyond it; panels travel on a stream of their own,
// and the device works on another. A panel's interchanges are one launch for what is right of it
// and one for what is left, off the critical path.
template <class T>
int pipelinedGetrf(int m, int n, T* a, int lda, int* ipiv, int nb);

}  // namespace lumo
