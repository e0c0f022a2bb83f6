#include "lapack/orgqr.h"

#include "lapack/generate_q.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Orgqr<T>::run() const {
    orgqr(m, n, k, a, lda, tau);
}

LUMO_INSTANTIATE_MEMBERS(Orgqr)
LUMO_EXPORT_S_D(orgqr, Orgqr)
LUMO_EXPORT_C_Z(ungqr, Orgqr)

}  // namespace lumo
