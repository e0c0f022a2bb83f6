// Weighted sums of device matrices, transposed or not.
#pragma once

#include "common/complex.h"
#include "platform/cuda3.h"

namespace lumo {

// C := alpha op(A) + beta op(B), m x n. The letter "T" transposes its operand; every other one,
// "C" and "t" included, leaves it as it is. C may be an operand that is not transposed, and must
// not overlap the operands otherwise. An empty C launches nothing.
//
// Returns the error of cudaConfigureCall, for which nothing was launched.
template <class T>
cudaError_t MADD(char transa, char transb, int m, int n, const T* a, int lda, const T* b, int ldb,
                 T* c, int ldc, RealOf<T> alpha, RealOf<T> beta);

}  // namespace lumo
