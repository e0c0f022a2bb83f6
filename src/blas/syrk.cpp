#include "blas/syrk.h"

#include "blas/cublas.h"
#include "blas/gemm.h"
#include "blas/tuning.h"
#include "common/matrix.h"
#include "routine/exports.h"

namespace lumo {

template <class T, class Scalar, char transpose>
void RankUpdate<T, Scalar, transpose>::run() const {
    requireMemory(c);
    if (!large(n, k)) return update(0, n);
    for (int j = 0; j < n; j += blasTuning.block) {
        const int width = std::min(blasTuning.block, n - j);
        update(j, width);
        const int first = uplo == 'L' ? j + width : 0;
        const int rows = uplo == 'L' ? n - first : j;
        if (rows > 0)
            gemm(plain() ? 'N' : transpose, plain() ? transpose : 'N', rows, width, k, T(alpha),
                 part(first), lda, part(j), lda, T(beta), at(c, ldc, first, j), ldc);
    }
}

// op(A) from its j-th row on.
template <class T, class Scalar, char transpose>
const T* RankUpdate<T, Scalar, transpose>::part(int j) const {
    return plain() ? at(a, lda, j, 0) : at(a, lda, 0, j);
}

// The block of `width` rows and columns on the diagonal.
template <class T, class Scalar, char transpose>
void RankUpdate<T, Scalar, transpose>::update(int j, int width) const {
    T* cjj = at(c, ldc, j, j);
    if constexpr (transpose == 'C')
        cublas::herk(uplo, trans, width, k, alpha, part(j), lda, beta, cjj, ldc);
    else
        cublas::syrk(uplo, trans, width, k, alpha, part(j), lda, beta, cjj, ldc);
}

LUMO_EXPORT_S_D_C_Z(syrk, Syrk)
LUMO_EXPORT_C_Z(herk, Herk)

}  // namespace lumo
