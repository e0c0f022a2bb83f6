#include "lapack/getrs.h"

#include <algorithm>

#include "basic/LASWP/LASWP.h"
#include "blas/cublas.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/letters.h"

namespace lumo {

template <class T>
void getrs(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb) {
    trans = upper(trans);
    if (!isOneOf(trans, "NTC")) throwArgumentError(-1);
    if (n < 0) throwArgumentError(-2);
    if (nrhs < 0) throwArgumentError(-3);
    if (lda < std::max(1, n)) throwArgumentError(-5);
    if (ldb < std::max(1, n)) throwArgumentError(-8);
    if (n > 0 && nrhs > 0) {
        if (!a) throwArgumentError(-4);
        if (!ipiv) throwArgumentError(-6);
        if (!b) throwArgumentError(-7);
    }
    if (n == 0 || nrhs == 0) return;
    if (trans != 'N') throwFeatureNotImplemented();

    LASWP(nrhs, b, ldb, 1, n, ipiv, 1);
    cublas::trsm('L', 'L', 'N', 'U', n, nrhs, T(1), a, lda, b, ldb);
    cublas::trsm('L', 'U', 'N', 'N', n, nrhs, T(1), a, lda, b, ldb);
}

LUMO_INSTANTIATE(getrs)

}  // namespace lumo
