// lumoSgesv, lumoCgesv and their device variants: linear systems by LU (LAPACK xGESV).
#include <algorithm>

#include "lapack/cpu_lapack.h"
#include "lapack/frame.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/tuning.h"
#include "platform/reciprocal.h"

namespace lumo {
namespace {

void checkGesv(int n, int nrhs, const void* a, int lda, const int* ipiv, const void* b, int ldb) {
    if (n < 0) throwArgumentError(-1);
    if (nrhs < 0) throwArgumentError(-2);
    if (lda < std::max(1, n)) throwArgumentError(-4);
    if (ldb < std::max(1, n)) throwArgumentError(-7);
    if (n == 0) return;
    if (!a) throwArgumentError(-3);
    if (!ipiv) throwArgumentError(-5);
    if (!b) throwArgumentError(-6);
}

template <class T>
lumoStatus deviceGesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb) {
    return computeFrame<T>(deviceCall, [&] {
        checkGesv(n, nrhs, a, lda, ipiv, b, ldb);
        Pivots pivots(n);
        const int zeroPivot = getrf(n, n, a, lda, pivots.data());
        pivots.deliver(ipiv);
        if (zeroPivot) throwDataError(zeroPivot);
        getrs('N', n, nrhs, a, lda, pivots.data(), b, ldb);
    });
}

template <class T>
bool reciprocalOverflows(T pivot) {
    if constexpr (isComplex<T>)
        return platform::reciprocalOverflows(pivot.re, pivot.im);
    else
        return platform::reciprocalOverflows(pivot);
}

// By the CPU LAPACK on the caller's memory, unless its solve would have multiplied by infinite
// reciprocals of pivots: then it is the device's after all.
template <class T>
lumoStatus smallSystem(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb) {
    T saved[smallLu];
    for (int j = 0; j < nrhs; ++j) std::copy_n(at(b, ldb, 0, j), n, saved + j * n);
    checkReturnedInfo(cpu::gesv(n, nrhs, a, lda, ipiv, b, ldb));
    bool tiny = false;
    for (int i = 0; i < n; ++i) tiny = tiny || reciprocalOverflows(*at(a, lda, i, i));
    if (!tiny) return lumoNoError;
    for (int j = 0; j < nrhs; ++j) std::copy_n(saved + j * n, n, at(b, ldb, 0, j));
    return guarded([&] {
        getrs('N', n, nrhs, a, lda, ipiv, b, ldb);
        cudalib::synchronizeAndCheck();
    });
}

template <class T>
lumoStatus hostGesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb) {
    using namespace cudalib;
    return computeFrame<T>(hostCall, [&] {
        checkGesv(n, nrhs, a, lda, ipiv, b, ldb);
        if (n > 0 && nrhs > 0 && isSmall(std::ptrdiff_t(n) * nrhs, smallLu))
            return smallSystem(n, nrhs, a, lda, ipiv, b, ldb);
        HostBoundMatrix<T> A(extent(n, n), a, lda, uploadAndDownload, 1, pitched);
        HostBoundMatrix<T> B(extent(n, nrhs), b, ldb, uploadAndDownload);
        HostBoundMatrix<int> P(extent(n, 1), ipiv, n, download);
        // Without right-hand sides B has no memory, but the device routine asks for a pointer.
        T* const deviceB = nrhs > 0 ? B.data() : A.data();
        const lumoStatus status = settled(deviceGesv(n, nrhs, A.data(), A.leadingDimension(),
                                                     P.data(), deviceB, B.leadingDimension()));
        if (!outputComplete(status)) P.cancelDownload();
        return status;
    });
}

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgesv(int n, int nrhs, float* a, int lda, int* ipiv, float* b, int ldb) {
    return hostGesv(n, nrhs, element(a), lda, ipiv, element(b), ldb);
}
lumoStatus lumoCgesv(int n, int nrhs, lumoFloatComplex* a, int lda, int* ipiv, lumoFloatComplex* b,
                     int ldb) {
    return hostGesv(n, nrhs, element(a), lda, ipiv, element(b), ldb);
}
lumoStatus lumoDeviceSgesv(int n, int nrhs, float* a, int lda, int* ipiv, float* b, int ldb) {
    return deviceGesv(n, nrhs, element(a), lda, ipiv, element(b), ldb);
}
lumoStatus lumoDeviceCgesv(int n, int nrhs, lumoFloatComplex* a, int lda, int* ipiv,
                           lumoFloatComplex* b, int ldb) {
    return deviceGesv(n, nrhs, element(a), lda, ipiv, element(b), ldb);
}
