#include "basic/lartv/lartv.h"

#include "common/exceptions.h"
#include "cudalib/launch.h"

template <class T>
void LARTV_k(int n, T* x, int incx, T* y, int incy, const lumo::RealOf<T>* c, const T* s, int incc);

namespace lumo {

template <class T>
void lartv(int n, T* x, int incx, T* y, int incy, const RealOf<T>* c, const T* s, int incc) {
    if (n < 0) throwArgumentError(-1);
    if (n == 0) return;
    if (!x) throwArgumentError(-2);
    if (incx < 1) throwArgumentError(-3);
    if (!y) throwArgumentError(-4);
    if (incy < 1) throwArgumentError(-5);
    if (!c) throwArgumentError(-6);
    if (!s) throwArgumentError(-7);
    if (incc < 1) throwArgumentError(-8);
    cudalib::launch(cudalib::Map1D(n), &LARTV_k<T>, n, x, incx, y, incy, c, s, incc);
}

LUMO_INSTANTIATE(lartv)

}  // namespace lumo
