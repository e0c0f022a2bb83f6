// Scaling the rows of a device matrix.
#pragma once

#include "common/complex.h"

namespace lumo {

// Row i of an m x n matrix times factors[i], real numbers in device memory.
template <class T>
void scaleRows(int m, int n, const RealOf<T>* factors, T* a, int lda);

}  // namespace lumo
