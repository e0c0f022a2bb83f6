#include "blas/syr2k.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/gemm.h"
#include "blas/tuning.h"
#include "common/matrix.h"
#include "routine/exports.h"

namespace lumo {
namespace {

template <class R>
R realPart(R x) {
    return x;
}
template <class R>
R realPart(Complex<R> x) {
    return x.re;
}

}  // namespace

template <class T, class Beta, char transpose>
void Rank2Update<T, Beta, transpose>::run() const {
    requireMemory(c);
    if (!large(n, k)) return update(0, n);
    for (int j = 0; j < n; j += blasTuning.block) {
        const int width = std::min(blasTuning.block, n - j);
        update(j, width);
        const int first = uplo == 'L' ? j + width : 0;
        const int rows = uplo == 'L' ? n - first : j;
        if (rows == 0) continue;
        multiply(rows, width, alpha, part(a, lda, first), lda, part(b, ldb, j), ldb,
                 T(realPart(beta)), at(c, ldc, first, j));
        multiply(rows, width, conjugate(alpha), part(b, ldb, first), ldb, part(a, lda, j), lda,
                 T(1), at(c, ldc, first, j));
    }
}

// op(X) from its j-th row on.
template <class T, class Beta, char transpose>
const T* Rank2Update<T, Beta, transpose>::part(const T* x, int ld, int j) const {
    return plain() ? at(x, ld, j, 0) : at(x, ld, 0, j);
}

// The block of `width` rows and columns on the diagonal. Without a k, A and B have no elements,
// and the check takes a leading dimension of 0 for them that CUBLAS does not.
template <class T, class Beta, char transpose>
void Rank2Update<T, Beta, transpose>::update(int j, int width) const {
    cublas::syr2k(uplo, plain() ? 'N' : transposed, width, k, alpha, part(a, lda, j),
                  std::max(1, lda), part(b, ldb, j), std::max(1, ldb), realPart(beta),
                  at(c, ldc, j, j), ldc);
}

template <class T, class Beta, char transpose>
void Rank2Update<T, Beta, transpose>::multiply(int rows, int width, T by, const T* x, int ldx,
                                               const T* y, int ldy, T to, T* block) const {
    gemm(plain() ? 'N' : transposed, plain() ? transposed : 'N', rows, width, k, by, x, ldx, y, ldy,
         to, block, ldc);
}

LUMO_EXPORT_S_D_C_Z(syr2k, Syr2k)
LUMO_EXPORT_C_Z(her2k, Her2k)

}  // namespace lumo
