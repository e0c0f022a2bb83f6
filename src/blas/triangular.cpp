#include "blas/triangular.h"

#include "blas/cublas.h"
#include "routine/exports.h"

namespace lumo {

template <class T, Triangular kind>
void TriangularOperation<T, kind>::run() const {
    if constexpr (kind == Triangular::product)
        cublas::trmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
    else
        cublas::trsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

LUMO_EXPORT_S_D_C_Z(trmm, Trmm)
LUMO_EXPORT_S_D_C_Z(trsm, Trsm)

}  // namespace lumo
