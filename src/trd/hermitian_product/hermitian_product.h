// The product of a Hermitian matrix with a vector that reads its triangle once.
#pragma once

namespace lumo {

// In how many parts the product with a matrix of order n is made.
template <class T>
int hermitianProductParts(int n);

// y := A x for a matrix of order n > 0, symmetric or Hermitian, of which the lower triangle is read
// and no imaginary part of the diagonal. parts: workspace for n elements times the parts, unless it
// is one. All in device memory.
//
// Every element that is read serves two products: of its column and of its row. A CPU's threads go
// along columns, a GPU's blocks have tiles (hermitian_tiles.h). The result depends on nothing but
// the operands.
template <class T>
void hermitianProduct(int n, const T* a, int lda, const T* x, T* y, T* parts);

}  // namespace lumo
