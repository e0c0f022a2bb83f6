// LU factorisation for devices that are much faster than the CPU and the way to it.
#pragma once

namespace lumo {

// As getrf (lapack/getrf.h), in panels of nb columns, nb < min(m, n). A panel is factorised while
// the device still updates what lies beyond it: by the CPU LAPACK, panels travelling on a stream of
// their own, or by the device itself where that is faster (tuning.h). A panel's interchanges are
// one launch or a few for what is right of it and for what is left, off the critical path.
template <class T>
int pipelinedGetrf(int m, int n, T* a, int lda, int* ipiv, int nb);

}  // namespace lumo
