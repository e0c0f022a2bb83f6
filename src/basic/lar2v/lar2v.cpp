#include "basic/lar2v/lar2v.h"

#include "common/exceptions.h"
#include "cudalib/launch.h"

template <class T, class... Real>
void LAR2V_k(int n, T* x, T* y, T* z, int incx, const lumo::RealOf<T>* c, const T* s, int incc);

namespace lumo {

template <class T>
void lar2v(int n, T* x, T* y, T* z, int incx, const RealOf<T>* c, const T* s, int incc) {
    if (n < 0) throwArgumentError(-1);
    if (n == 0) return;
    if (!x) throwArgumentError(-2);
    if (!y) throwArgumentError(-3);
    if (!z) throwArgumentError(-4);
    if (incx < 1) throwArgumentError(-5);
    if (!c) throwArgumentError(-6);
    if (!s) throwArgumentError(-7);
    if (incc < 1) throwArgumentError(-8);
    const cudalib::Map1D map(n);
    if constexpr (isComplex<T>)
        cudalib::launch(map, &LAR2V_k<T, RealOf<T>>, n, x, y, z, incx, c, s, incc);
    else
        cudalib::launch(map, &LAR2V_k<T>, n, x, y, z, incx, c, s, incc);
}

LUMO_INSTANTIATE(lar2v)

}  // namespace lumo
