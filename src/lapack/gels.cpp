#include "lapack/gels.h"

#include "basic/LASET/LASET.h"
#include "cudalib/workspace_pool.h"
#include "lapack/apply_q.h"
#include "lapack/orthogonal_factorization.h"
#include "lapack/trtrs.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// Rows `first` ... `last` - 1 of B become zero.
template <class T>
void zeroRows(int first, int last, int nrhs, T* b, int ldb) {
    if (first < last && nrhs > 0) {
        requireMemory(b);
        LASET('F', last - first, nrhs, T(0), T(0), b + first, ldb);
    }
}

}  // namespace

template <class T>
void Gels<T>::run() const {
    if (!hasSystem()) return zeroRows(0, std::max(m, n), nrhs, b, ldb);

    cudalib::Workspace<T> tauSpace(std::size_t(std::min(m, n)));
    T* const tau = tauSpace.data();
    const bool plain = trans == 'N';
    if (m >= n) {
        factorizeQr(m, n, a, lda, tau);
        if (plain) {
            ormqr('L', 'C', m, nrhs, n, a, lda, tau, b, ldb);
            trtrs('U', 'N', 'N', n, nrhs, a, lda, b, ldb);
        } else {
            trtrs('U', 'C', 'N', n, nrhs, a, lda, b, ldb);
            zeroRows(n, m, nrhs, b, ldb);
            ormqr('L', 'N', m, nrhs, n, a, lda, tau, b, ldb);
        }
    } else {
        factorizeLq(m, n, a, lda, tau);
        if (plain) {
            trtrs('L', 'N', 'N', m, nrhs, a, lda, b, ldb);
            zeroRows(m, n, nrhs, b, ldb);
            ormlq('L', 'C', n, nrhs, m, a, lda, tau, b, ldb);
        } else {
            ormlq('L', 'N', n, nrhs, m, a, lda, tau, b, ldb);
            trtrs('L', 'C', 'N', m, nrhs, a, lda, b, ldb);
        }
    }
}

LUMO_INSTANTIATE_MEMBERS(Gels)
LUMO_EXPORT_S_D_C_Z(gels, Gels)

}  // namespace lumo
