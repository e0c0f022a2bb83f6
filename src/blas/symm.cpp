#include "blas/symm.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/gemm.h"
#include "blas/tuning.h"
#include "common/matrix.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Symm<T>::run() const {
    if (!large(m, n)) return cublas::symm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
    for (int j = 0; j < order(); j += blasTuning.block) {
        const int width = std::min(blasTuning.block, order() - j), behind = j + width;
        const T *ajj = at(a, lda, j, j), *bj = slice(b, ldb, j);
        T* cj = slice(c, ldc, j);
        if (left())
            cublas::symm(side, uplo, width, n, alpha, ajj, lda, bj, ldb, beta, cj, ldc);
        else
            cublas::symm(side, uplo, m, width, alpha, ajj, lda, bj, ldb, beta, cj, ldc);
        addOffDiagonal(j, width, 0, j);
        addOffDiagonal(j, width, behind, order() - behind);
    }
}

// The rows of B or C from the j-th on, its columns if A stands on the right.
template <class T>
template <class P>
P* Symm<T>::slice(P* p, int ld, int j) const {
    return left() ? at(p, ld, j, 0) : at(p, ld, 0, j);
}

// Adds to block j of C what `count` rows or columns of B from the p-th on contribute. The block
// of A between them lies off the diagonal, stored as it is or mirrored.
template <class T>
void Symm<T>::addOffDiagonal(int j, int width, int p, int count) const {
    if (count == 0) return;
    const bool before = p < j;
    const T *bp = slice(b, ldb, p), one = T(1);
    T* cj = slice(c, ldc, j);
    if (left()) {
        const bool stored = before == (uplo == 'L');
        const T* block = stored ? at(a, lda, j, p) : at(a, lda, p, j);
        gemm(stored ? 'N' : 'C', 'N', width, n, count, alpha, block, lda, bp, ldb, one, cj, ldc);
    } else {
        const bool stored = before == (uplo == 'U');
        const T* block = stored ? at(a, lda, p, j) : at(a, lda, j, p);
        gemm('N', stored ? 'N' : 'C', m, width, count, alpha, bp, ldb, block, lda, one, cj, ldc);
    }
}

template <class T>
using Hemm = Symm<T>;

LUMO_EXPORT_S_D_C_Z(symm, Symm)
LUMO_EXPORT_C_Z(hemm, Hemm)

}  // namespace lumo
