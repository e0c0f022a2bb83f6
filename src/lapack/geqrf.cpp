#include "lapack/geqrf.h"

#include <algorithm>

#include "lapack/frame.h"
#include "lapack/orthogonal_factorization.h"

namespace lumo {

void checkGeqrf(int m, int n, const void* a, int lda, const void* tau) {
    if (m < 0) throwArgumentError(-1);
    if (n < 0) throwArgumentError(-2);
    if (lda < std::max(1, m)) throwArgumentError(-4);
    if ((m <= 1 && n <= 1) || m == 0 || n == 0) return;
    if (!a) throwArgumentError(-3);
    if (!tau) throwArgumentError(-5);
}

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    checkGeqrf(m, n, a, lda, tau);
    if (m == 0 || n == 0) return;
    requireMemory(a);
    requireMemory(tau);
    factorizeQr(m, n, a, lda, tau);
}

template void geqrf(int, int, float*, int, float*);
template void geqrf(int, int, double*, int, double*);
template void geqrf(int, int, Complex<float>*, int, Complex<float>*);
template void geqrf(int, int, Complex<double>*, int, Complex<double>*);

namespace {

template <class T>
lumoStatus deviceGeqrf(int m, int n, T* a, int lda, T* tau) {
    return computeFrame<T>(deviceCall, [&] { geqrf(m, n, a, lda, tau); });
}

template <class T>
lumoStatus hostGeqrf(int m, int n, T* a, int lda, T* tau) {
    using namespace cudalib;
    return computeFrame<T>(hostCall, [&] {
        checkGeqrf(m, n, a, lda, tau);
        const int k = std::min(m, n);
        HostBoundMatrix<T> A(extent(m, n), a, lda, uploadAndDownload, 1, pitched);
        HostBoundMatrix<T> Tau(extent(k, 1), tau, k, download);
        const lumoStatus status =
            settled(deviceGeqrf(m, n, A.data(), A.leadingDimension(), Tau.data()));
        if (!outputComplete(status)) Tau.cancelDownload();
        return status;
    });
}

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgeqrf(int m, int n, float* a, int lda, float* tau) {
    return hostGeqrf(m, n, element(a), lda, element(tau));
}
lumoStatus lumoCgeqrf(int m, int n, lumoFloatComplex* a, int lda, lumoFloatComplex* tau) {
    return hostGeqrf(m, n, element(a), lda, element(tau));
}
lumoStatus lumoDeviceSgeqrf(int m, int n, float* a, int lda, float* tau) {
    return deviceGeqrf(m, n, element(a), lda, element(tau));
}
lumoStatus lumoDeviceCgeqrf(int m, int n, lumoFloatComplex* a, int lda, lumoFloatComplex* tau) {
    return deviceGeqrf(m, n, element(a), lda, element(tau));
}
