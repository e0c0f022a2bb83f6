#include "basic/LASWP/LASWP.h"

#include <algorithm>

#include "common/exceptions.h"
#include "cudalib/launch.h"

template <class Map, class T>
void KernelLASWP(int n, T* a, int lda, int start, int count, lumo::swstruct piv);
template <class Map, class T>
void KernelLASWPCOL(int n, T* a, int lda, int start, int count, lumo::swstruct piv);
template <class Map, class T>
void KernelLASWPWide(int n, T* a, int lda, int start, int count, lumo::swstructWide piv);
template <class Map, class T>
void KernelLASWPCOLWide(int n, T* a, int lda, int start, int count, lumo::swstructWide piv);

namespace lumo {
namespace {

void check(int n, const void* a, int lda, int leastLda, int k1, int k2, const int* ipiv) {
    if (n < 0) throwArgumentError(-1);
    if (n == 0) return;
    if (!a) throwArgumentError(-2);
    if (lda < leastLda) throwArgumentError(-3);
    if (k1 < 0) throwArgumentError(-4);
    if (k2 < 0) throwArgumentError(-5);
    if (!ipiv) throwArgumentError(-6);
}

template <class Interchanges>
Interchanges packed(const int* ipiv, int count) {
    Interchanges piv{};
    for (int r = 0; r < count; ++r)
        piv.row[r] = static_cast<std::remove_reference_t<decltype(piv.row[r])>>(ipiv[r] - 1);
    return piv;
}

// The pivots travel in the argument block, sixteen a launch, so that none need be copied to the
// device.
template <class T, class Kernel, class WideKernel>
void interchange(Kernel kernel, WideKernel wideKernel, int n, T* a, int lda, int k1, int k2,
                 const int* ipiv) {
    if (n == 0 || k1 >= k2) return;
    const cudalib::Map1D map(n);
    for (int i = k1; i <= k2; i += interchangesPerLaunch) {
        const int count = std::min(interchangesPerLaunch, k2 - i + 1);
        const int* chunk = ipiv + (i - 1);
        if (*std::max_element(chunk, chunk + count) <= 65536)
            cudalib::launch(map, kernel, n, a, lda, i - 1, count, packed<swstruct>(chunk, count));
        else
            cudalib::launch(map, wideKernel, n, a, lda, i - 1, count,
                            packed<swstructWide>(chunk, count));
    }
}

}  // namespace

template <class T>
void LASWP(int n, T* a, int lda, int k1, int k2, const int* ipiv, int /*incx*/) {
    check(n, a, lda, 0, k1, k2, ipiv);
    interchange(&KernelLASWP<cudalib::Map1D, T>, &KernelLASWPWide<cudalib::Map1D, T>, n, a, lda, k1,
                k2, ipiv);
}

template <class T>
void LASWPCOL(int n, T* a, int lda, int k1, int k2, const int* ipiv, int /*incx*/) {
    check(n, a, lda, n, k1, k2, ipiv);
    interchange(&KernelLASWPCOL<cudalib::Map1D, T>, &KernelLASWPCOLWide<cudalib::Map1D, T>, n, a,
                lda, k1, k2, ipiv);
}

LUMO_INSTANTIATE(LASWP)
LUMO_INSTANTIATE(LASWPCOL)

}  // namespace lumo
