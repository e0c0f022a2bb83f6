#include "lapack/bidiagonal_panel.h"

#include "blas/gemm.h"
#include "blas/gemv/gemv.h"
#include "brd/next_column/next_column.h"
#include "brd/reflectors/reflectors.h"
#include "common/matrix.h"

namespace lumo {
namespace {

// Products with the matrix begin at a row that is a multiple of it.
constexpr int alignedRows = 8;

}  // namespace

template <class T>
void BidiagonalPanel<T>::reduce(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq,
                                T* taup) const {
    T *const row = vectors_.data(), *const t = row + ldw_, *const c = t + rank_,
             *const heads = c + rank_;
    const int columns = rank_ / 2;
    for (int i = 0; i < columns; ++i) {
        // So many columns P and W have: of whole pairs, and with y one more.
        const int pairs = 2 * i, odd = pairs + 1;
        const int rows = m - i, right = n - i - 1, lead = i % alignedRows;
        T *const v = p(i, pairs), *const rest = at(a, lda, i, i + 1);
        columnReflector(rows, lead, at(a, lda, i, i), v, d + i, tauq + i, pairs, p(i, 0), ldp_, c);
        if (i > 0) gemv(adjointLetter<T>, rows, pairs, T(-1), p(i, 0), ldp_, v, 1, T(0), t, 1);
        const int parts =
            bothProducts(rows + lead, lead, right, pairs, rest - lead, lda, w(i + 1, 0), ldw_,
                         v - lead, t, c, tauq + i, row, parts_.data(), ldp_);
        gemv(adjointLetter<T>, right, odd, T(1), w(i + 1, 0), ldw_, row, 1, T(0), heads, 1);
        rowReflector(right, row, rest, lda, w(i + 1, odd), e + i, taup + i);
        nextColumn(rows - 1, right, odd, rest + 1, lda, w(i + 1, 0), ldw_, p(i + 1, 0), ldp_, heads,
                   parts_.data() + lead + 1, ldp_, parts, e + i, taup + i, i + 1 < columns);
    }
    gemm('N', adjointLetter<T>, m - columns, n - columns, rank_, T(-1), p(columns, 0), ldp_,
         w(columns, 0), ldw_, T(1), at(a, lda, columns, columns), lda);
}

template class BidiagonalPanel<float>;
template class BidiagonalPanel<double>;
template class BidiagonalPanel<Complex<float>>;
template class BidiagonalPanel<Complex<double>>;

}  // namespace lumo
