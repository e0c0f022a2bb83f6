#include "lapack/gecon.h"

#include "blas/cublas.h"
#include "lapack/condition.h"
#include "routine/exports.h"

namespace lumo {

// The norms of A^-1 are those of (L U)^-1, whose columns are the same in another order. The
// infinity norm is the 1-norm of the conjugate transpose.
template <class T>
void Gecon<T>::run() const {
    const bool rows = norm == 'I';
    *rcond = reciprocalCondition<T>(n, anorm, [&](bool adjoint, T* x) {
        auto solve = [&](char uplo, char trans, char diag) {
            cublas::trsm('L', uplo, trans, diag, n, 1, T(1), a, lda, x, n);
        };
        if (adjoint == rows) {
            solve('L', 'N', 'U');
            solve('U', 'N', 'N');
        } else {
            solve('U', 'C', 'N');
            solve('L', 'C', 'U');
        }
    });
}

LUMO_INSTANTIATE_MEMBERS(Gecon)
LUMO_EXPORT_S_D_C_Z(gecon, Gecon)

}  // namespace lumo
