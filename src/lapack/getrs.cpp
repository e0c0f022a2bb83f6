#include "lapack/getrs.h"

#include <algorithm>

#include "basic/LASWP/LASWP.h"
#include "blas/cublas.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "common/state.h"
#include "lapack/pivots.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
LuSolve<T>::LuSolve(int n, int nrhs, char trans) : n_(n), nrhs_(nrhs), trans_(trans) {
    if (deviceIsModern() || trans != 'N') permutation_.emplace(n, nrhs);
}

template <class T>
void LuSolve<T>::run(const T* a, int lda, const int* ipiv, T* b, int ldb) const {
    if (trans_ != 'N') {
        cublas::trsm('L', 'U', trans_, 'N', n_, nrhs_, T(1), a, lda, b, ldb);
        cublas::trsm('L', 'L', trans_, 'U', n_, nrhs_, T(1), a, lda, b, ldb);
        return permutation_->apply(ipiv, b, ldb, true);
    }
    if (permutation_)
        permutation_->apply(ipiv, b, ldb);
    else
        LASWP(nrhs_, b, ldb, 1, n_, ipiv, 1);
    cublas::trsm('L', 'L', 'N', 'U', n_, nrhs_, T(1), a, lda, b, ldb);
    cublas::trsm('L', 'U', 'N', 'N', n_, nrhs_, T(1), a, lda, b, ldb);
}

template class LuSolve<float>;
template class LuSolve<double>;
template class LuSolve<Complex<float>>;
template class LuSolve<Complex<double>>;

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

    LuSolve<T>(n, nrhs).run(a, lda, ipiv, b, ldb);
}

LUMO_INSTANTIATE(getrs)

template <class T>
void Getrs<T>::run() const {
    Pivots pivots(n, ipiv);
    if (!pivots.areRows()) throwArgumentError(-6);
    LuSolve<T>(n, nrhs, trans).run(a, lda, pivots.data(), b, ldb);
}

LUMO_INSTANTIATE_MEMBERS(Getrs)
LUMO_EXPORT_S_D_C_Z(getrs, Getrs)

}  // namespace lumo
