// What a factorised panel of LU does to columns beside it.
#pragma once

#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/matrix.h"

namespace lumo {

// Of a matrix of m rows, the panel of jb columns whose first element is (j, j), counted from 0, and
// `columns` columns from `first` on. The rows have been exchanged.

// A22 := A22 - L21 U12.
template <class T>
void subtractProduct(MatrixView<T> a, int m, int j, int jb, int first, int columns) {
    const int below = m - j - jb;
    if (below > 0 && columns > 0)
        gemm('N', 'N', below, columns, jb, T(-1), a.at(j + jb, j), a.ld, a.at(j, first), a.ld, T(1),
             a.at(j + jb, first), a.ld);
}

// U12 := L11^-1 A12, and the same.
template <class T>
void eliminate(MatrixView<T> a, int m, int j, int jb, int first, int columns) {
    if (columns <= 0) return;
    cublas::trsm('L', 'L', 'N', 'U', jb, columns, T(1), a.at(j, j), a.ld, a.at(j, first), a.ld);
    subtractProduct(a, m, j, jb, first, columns);
}

}  // namespace lumo
