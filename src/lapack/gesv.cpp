#include "lapack/gesv.h"

#include "common/matrix.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/host_lapack.h"
#include "lapack/pivots.h"
#include "lapack/tuning.h"
#include "platform/reciprocal.h"
#include "routine/exports.h"

namespace lumo {
namespace {

template <class T>
bool reciprocalOverflows(T pivot) {
    if constexpr (isComplex<T>)
        return platform::reciprocalOverflows(pivot.re, pivot.im);
    else
        return platform::reciprocalOverflows(pivot);
}

}  // namespace

template <class T>
void Gesv<T>::run() const {
    Pivots pivots(n);
    const LuSolve<T> solve(n, nrhs);
    const int zeroPivot = getrf(n, n, a, lda, pivots.data());
    pivots.deliver(ipiv);
    if (zeroPivot) throwDataError(zeroPivot);
    solve.run(a, lda, pivots.data(), b, ldb);
}

template <class T>
bool Gesv<T>::isSmall() const {
    return nrhs > 0 && std::ptrdiff_t(n) * nrhs <= smallLu;
}

// By the CPU LAPACK on the caller's memory, unless its solve would have multiplied by infinite
// reciprocals of pivots: then it is the device's after all.
template <class T>
lumoStatus Gesv<T>::runOnCpu() const {
    T saved[smallLu];
    for (int j = 0; j < nrhs; ++j) std::copy_n(at(b, ldb, 0, j), n, saved + j * n);
    checkReturnedInfo(host::gesv(n, nrhs, a, lda, ipiv, b, ldb));
    bool tiny = false;
    for (int i = 0; i < n; ++i) tiny = tiny || reciprocalOverflows(*at(a, lda, i, i));
    if (!tiny) return lumoNoError;
    for (int j = 0; j < nrhs; ++j) std::copy_n(saved + j * n, n, at(b, ldb, 0, j));
    return guarded([&] {
        getrs('N', n, nrhs, a, lda, ipiv, b, ldb);
        cudalib::synchronizeAndCheck();
    });
}

LUMO_INSTANTIATE_MEMBERS(Gesv)
LUMO_EXPORT_S_D_C_Z(gesv, Gesv)

}  // namespace lumo
