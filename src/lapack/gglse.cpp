// lumoSgglse, lumoCgglse and their device variants: least squares under linear constraints by a
// generalized RQ factorisation (LAPACK xGGLSE).
#include "lapack/gglse.h"

#include <algorithm>

#include "basic/Set/Set.h"
#include "blas/cublas.h"
#include "lapack/apply_q.h"
#include "lapack/frame.h"
#include "lapack/orthogonal_factorization.h"
#include "lapack/trtrs.h"

namespace lumo {
namespace {

// A negative n fails the second test: there is no info -2.
void checkGglse(int m, int n, int p, const void* a, int lda, const void* b, int ldb, const void* c,
                const void* d, const void* x) {
    if (m < 0) throwArgumentError(-1);
    if (!(n >= p && p >= 0 && long(n) - m <= p)) throwArgumentError(-3);
    if (lda < std::max(1, m)) throwArgumentError(-5);
    if (ldb < std::max(1, p)) throwArgumentError(-7);
    if (n == 0) return;
    if (!a) throwArgumentError(-4);
    if (!b && p > 0) throwArgumentError(-6);
    if (!c) throwArgumentError(-8);
    if (!d && p > 0) throwArgumentError(-9);
    if (!x) throwArgumentError(-10);
}

// One upper triangular solve of the two; a singular triangle is the data error `info`.
template <class T>
void solve(int n, const T* a, int lda, T* b, int info) {
    try {
        trtrs('U', 'N', 'N', n, 1, a, lda, b, n);
    } catch (const InfoException& e) {
        if (e.info() < 1) throw;
        throwDataError(info);
    }
}

// B = (0 T12) Q and A = Z T Q (LAPACK xGGRQF) for p x n B and m x n A.
template <class T>
void ggrqf(int p, int m, int n, T* b, int ldb, T* taub, T* a, int lda, T* taua) {
    factorizeRq(p, n, b, ldb, taub);
    ormrq('R', 'C', m, n, p, b, ldb, taub, a, lda);
    factorizeQr(m, n, a, lda, taua);
}

}  // namespace

template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x) {
    checkGglse(m, n, p, a, lda, b, ldb, c, d, x);
    if (n == 0) return;

    const T one(1), minusOne(-1);
    const int free = n - p;  // unknowns that the constraints leave
    cudalib::Workspace<T> taub{std::size_t(p)}, taua{std::size_t(std::min(m, n))};
    ggrqf(p, m, n, b, ldb, taub.data(), a, lda, taua.data());
    ormqr('L', 'C', m, 1, std::min(m, n), a, lda, taua.data(), c, std::max(1, m));

    if (p > 0) {
        solve(p, at(b, ldb, 0, free), ldb, d, 1);
        cublas::copy(p, d, 1, x + free, 1);
        cublas::gemv('N', free, p, minusOne, at(a, lda, 0, free), lda, d, 1, one, c, 1);
    }
    if (free > 0) {
        solve(free, a, lda, c, 2);
        cublas::copy(free, c, 1, x, 1);
    }
    const int rows = m < n ? m - free : p;
    if (rows > 0) {
        if (m < n)
            cublas::gemv('N', rows, n - m, minusOne, at(a, lda, free, m), lda, d + rows, 1, one,
                         c + free, 1);
        cublas::trmv('U', 'N', 'N', rows, at(a, lda, free, free), lda, d, 1);
        cublas::axpy(rows, minusOne, d, 1, c + free, 1);
    }
    ormrq('L', 'C', n, 1, p, b, ldb, taub.data(), x, n);
}

template void gglse(int, int, int, float*, int, float*, int, float*, float*, float*);
template void gglse(int, int, int, double*, int, double*, int, double*, double*, double*);
template void gglse(int, int, int, Complex<float>*, int, Complex<float>*, int, Complex<float>*,
                    Complex<float>*, Complex<float>*);
template void gglse(int, int, int, Complex<double>*, int, Complex<double>*, int, Complex<double>*,
                    Complex<double>*, Complex<double>*);

namespace {

template <class T>
lumoStatus deviceGglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x) {
    return computeFrame<T>(deviceCall, [&] { gglse(m, n, p, a, lda, b, ldb, c, d, x); });
}

template <class T>
lumoStatus hostGglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x) {
    using namespace cudalib;
    return computeFrame<T>(hostCall, [&] {
        checkGglse(m, n, p, a, lda, b, ldb, c, d, x);
        if (n == 0)  // no operand is looked at
            return settled(deviceGglse(m, n, p, a, lda, b, ldb, c, d, x));
        HostBoundMatrix<T> A(extent(m, n), a, lda, uploadAndDownload, 1, pitched);
        HostBoundMatrix<T> B(extent(p, n), b, ldb, uploadAndDownload);
        HostBoundMatrix<T> C(extent(m, 1), c, std::max(1, m), uploadAndDownload);
        HostBoundMatrix<T> D(extent(p, 1), d, std::max(1, p), uploadAndDownload);
        HostBoundMatrix<T> X(extent(n, 1), x, n, download);
        // What a singular triangle leaves unsolved comes back as zero.
        setVector<0>(n, X.data(), 1);
        // Without rows A and c have no memory, but the device routine asks for pointers.
        T* const deviceA = m > 0 ? A.data() : X.data();
        T* const deviceC = m > 0 ? C.data() : X.data();
        const lumoStatus status =
            settled(deviceGglse(m, n, p, deviceA, A.leadingDimension(), B.data(),
                                B.leadingDimension(), deviceC, D.data(), X.data()));
        if (!outputComplete(status)) X.cancelDownload();
        return status;
    });
}

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgglse(int m, int n, int p, float* a, int lda, float* b, int ldb, float* c, float* d,
                      float* x) {
    return hostGglse(m, n, p, element(a), lda, element(b), ldb, element(c), element(d), element(x));
}
lumoStatus lumoCgglse(int m, int n, int p, lumoFloatComplex* a, int lda, lumoFloatComplex* b,
                      int ldb, lumoFloatComplex* c, lumoFloatComplex* d, lumoFloatComplex* x) {
    return hostGglse(m, n, p, element(a), lda, element(b), ldb, element(c), element(d), element(x));
}
lumoStatus lumoDeviceSgglse(int m, int n, int p, float* a, int lda, float* b, int ldb, float* c,
                            float* d, float* x) {
    return deviceGglse(m, n, p, element(a), lda, element(b), ldb, element(c), element(d),
                       element(x));
}
lumoStatus lumoDeviceCgglse(int m, int n, int p, lumoFloatComplex* a, int lda, lumoFloatComplex* b,
                            int ldb, lumoFloatComplex* c, lumoFloatComplex* d,
                            lumoFloatComplex* x) {
    return deviceGglse(m, n, p, element(a), lda, element(b), ldb, element(c), element(d),
                       element(x));
}
