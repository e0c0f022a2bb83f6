#include "basic/largv/largv.h"

#include "common/exceptions.h"
#include "cudalib/launch.h"

template <class T, class... Real>
void LARGV_k(int n, T* x, int incx, T* y, int incy, lumo::RealOf<T>* c, int incc);

namespace lumo {

template <class T>
void largv(int n, T* x, int incx, T* y, int incy, RealOf<T>* c, int incc) {
    if (n < 0) throwArgumentError(-1);
    if (n == 0) return;
    if (!x) throwArgumentError(-2);
    if (incx < 1) throwArgumentError(-3);
    if (!y) throwArgumentError(-4);
    if (incy < 1) throwArgumentError(-5);
    if (!c) throwArgumentError(-6);
    if (incc < 1) throwArgumentError(-7);
    const cudalib::Map1D map(n);
    if constexpr (isComplex<T>)
        cudalib::launch(map, &LARGV_k<T, RealOf<T>>, n, x, incx, y, incy, c, incc);
    else
        cudalib::launch(map, &LARGV_k<T>, n, x, incx, y, incy, c, incc);
}

LUMO_INSTANTIATE(largv)

}  // namespace lumo
