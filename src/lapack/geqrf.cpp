#include "lapack/geqrf.h"

#include "lapack/orthogonal_factorization.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Geqrf<T>::run() const {
    requireMemory(a);
    requireMemory(tau);
    factorizeQr(m, n, a, lda, tau);
}

LUMO_INSTANTIATE_MEMBERS(Geqrf)
LUMO_EXPORT_S_D_C_Z(geqrf, Geqrf)

}  // namespace lumo
