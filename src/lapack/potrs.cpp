#include "lapack/potrs.h"

#include "blas/cublas.h"
#include "common/element_types.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void potrs(char uplo, int n, int nrhs, const T* a, int lda, T* b, int ldb) {
    for (char trans : {uplo == 'U' ? 'C' : 'N', uplo == 'U' ? 'N' : 'C'})
        cublas::trsm('L', uplo, trans, 'N', n, nrhs, T(1), a, lda, b, ldb);
}

LUMO_INSTANTIATE(potrs)

template <class T>
void Potrs<T>::run() const {
    potrs(uplo, n, nrhs, a, lda, b, ldb);
}

LUMO_INSTANTIATE_MEMBERS(Potrs)
LUMO_EXPORT_S_D_C_Z(potrs, Potrs)

}  // namespace lumo
