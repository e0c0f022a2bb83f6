#include "lapack/ormqr.h"

#include "lapack/apply_q.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Ormqr<T>::run() const {
    ormqr(side, trans == 'N' ? 'N' : 'C', m, n, k, a, lda, tau, c, ldc);
}

LUMO_INSTANTIATE_MEMBERS(Ormqr)
LUMO_EXPORT_S_D(ormqr, Ormqr)
LUMO_EXPORT_C_Z(unmqr, Ormqr)

}  // namespace lumo
