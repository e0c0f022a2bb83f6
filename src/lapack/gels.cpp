// lumoSgels, lumoCgels and their device variants: least squares and minimum-norm solutions by QR
// or LQ (LAPACK xGELS, without its scaling).
#include "lapack/gels.h"

#include <algorithm>

#include "basic/LASET/LASET.h"
#include "lapack/apply_q.h"
#include "lapack/frame.h"
#include "lapack/orthogonal_factorization.h"
#include "lapack/trtrs.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

void checkGels(char& trans, int m, int n, int nrhs, const void* a, int lda, const void* b,
               int ldb) {
    trans = upper(trans);
    if (!isOneOf(trans, "NTC")) throwArgumentError(-1);
    if (m < 0) throwArgumentError(-2);
    if (n < 0) throwArgumentError(-3);
    if (nrhs < 0) throwArgumentError(-4);
    if (lda < std::max(1, m)) throwArgumentError(-6);
    if (ldb < std::max({1, m, n})) throwArgumentError(-8);
    if (std::min({m, n, nrhs}) == 0) return;
    if (!a) throwArgumentError(-5);
    if (!b) throwArgumentError(-7);
}

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
void gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb) {
    checkGels(trans, m, n, nrhs, a, lda, b, ldb);
    if (std::min({m, n, nrhs}) == 0) return zeroRows(0, std::max(m, n), nrhs, b, ldb);

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

template void gels(char, int, int, int, float*, int, float*, int);
template void gels(char, int, int, int, double*, int, double*, int);
template void gels(char, int, int, int, Complex<float>*, int, Complex<float>*, int);
template void gels(char, int, int, int, Complex<double>*, int, Complex<double>*, int);

namespace {

template <class T>
lumoStatus deviceGels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb) {
    return computeFrame<T>(deviceCall, [&] { gels(trans, m, n, nrhs, a, lda, b, ldb); });
}

template <class T>
lumoStatus hostGels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb) {
    using namespace cudalib;
    return computeFrame<T>(hostCall, [&] {
        checkGels(trans, m, n, nrhs, a, lda, b, ldb);
        // Without a system to solve A is not looked at and may be null.
        const TransferMode mode = std::min({m, n, nrhs}) == 0 ? noTransfer : uploadAndDownload;
        HostBoundMatrix<T> A(extent(m, n), a, lda, mode, 1, pitched);
        HostBoundMatrix<T> B(extent(std::max(m, n), nrhs), b, ldb, uploadAndDownload);
        return settled(deviceGels(trans, m, n, nrhs, A.data(), A.leadingDimension(), B.data(),
                                  B.leadingDimension()));
    });
}

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgels(char trans, int m, int n, int nrhs, float* a, int lda, float* b, int ldb) {
    return hostGels(trans, m, n, nrhs, element(a), lda, element(b), ldb);
}
lumoStatus lumoCgels(char trans, int m, int n, int nrhs, lumoFloatComplex* a, int lda,
                     lumoFloatComplex* b, int ldb) {
    return hostGels(trans, m, n, nrhs, element(a), lda, element(b), ldb);
}
lumoStatus lumoDeviceSgels(char trans, int m, int n, int nrhs, float* a, int lda, float* b,
                           int ldb) {
    return deviceGels(trans, m, n, nrhs, element(a), lda, element(b), ldb);
}
lumoStatus lumoDeviceCgels(char trans, int m, int n, int nrhs, lumoFloatComplex* a, int lda,
                           lumoFloatComplex* b, int ldb) {
    return deviceGels(trans, m, n, nrhs, element(a), lda, element(b), ldb);
}
