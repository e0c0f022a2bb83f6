// The matrix product, for the exports and for the algorithms of the library.
#pragma once

#include "runtime/complex.h"

namespace lumo {

// The letter for A^H, which is A^T for real elements.
template <class T>
constexpr char adjointLetter = isComplex<T> ? 'C' : 'T';

// C := alpha op(A) op(B) + beta C with C m x n, on device matrices, op "N", "T" or "C". Instances:
// the four element types. Arguments are left to CUBLAS to check; a null operand that has elements
// raises a CUDA error. On devices of capability 2.0 and later operands beyond a limit are halved.
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc);

}  // namespace lumo
