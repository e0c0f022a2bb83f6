// Differences of device matrices, transposed or not.
#pragma once

#include "platform/cuda3.h"

namespace lumo {

// A := op(A) - op(B), m x n. Both "T" and "C" transpose without conjugating. A transposed A is
// n x m before and m x n after, in place, so its memory must hold both shapes: lda is at least
// max(m, n). A and B must not overlap, unless neither is transposed. An empty A launches nothing.
//
// The letters count as given, and of the pairs with a transposed A, ("T", "C") leaves B as it is
// and ("C", anything) transposes it.
//
// Returns the error of cudaConfigureCall, for which nothing was launched.
template <class T>
cudaError_t subtractMatrix(char transa, char transb, int m, int n, T* a, int lda, const T* b,
                           int ldb);

}  // namespace lumo
