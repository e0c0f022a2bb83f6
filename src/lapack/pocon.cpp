#include "lapack/pocon.h"

#include "lapack/condition.h"
#include "lapack/potrs.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Pocon<T>::run() const {
    *rcond = reciprocalCondition<T>(
        n, anorm, [&](bool /*adjoint*/, T* x) { potrs(uplo, n, 1, a, lda, x, n); });
}

LUMO_INSTANTIATE_MEMBERS(Pocon)
LUMO_EXPORT_S_D_C_Z(pocon, Pocon)

}  // namespace lumo
