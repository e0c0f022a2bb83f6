#include "lapack/posv.h"

#include "lapack/potrf.h"
#include "lapack/potrs.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Posv<T>::run() const {
    if (const int minor = potrf(uplo, n, a, lda)) throwDataError(minor);
    potrs(uplo, n, nrhs, a, lda, b, ldb);
}

LUMO_INSTANTIATE_MEMBERS(Posv)
LUMO_EXPORT_S_D_C_Z(posv, Posv)

}  // namespace lumo
