#include "basic/larfg/larfg.h"

#include "basic/larfg/shape.h"
#include "cudalib/launch.h"
#include "runtime/frame.h"

template <class Map, class T>
void LARFG_k(int n, T* alpha, T* x, int incx, T* tau);

namespace lumo {

template <class T>
void larfg(int n, T* alpha, T* x, int incx, T* tau) {
    if (n < 0) throwArgumentError(-1);
    if (!tau) throwArgumentError(-5);
    if (n == 0) return;
    if (!alpha) throwArgumentError(-2);
    if (!x) throwArgumentError(-3);
    if (incx < 0) throwArgumentError(-4);
    cudalib::launch(ReflectorMap(), &LARFG_k<ReflectorMap, T>, n, alpha, x, incx, tau);
}

template <class T>
lumoStatus deviceLarfg(int n, T* alpha, T* x, int incx, T* tau) {
    return computeFrame<T>(deviceCall, [&] { larfg(n, alpha, x, incx, tau); });
}

LUMO_INSTANTIATE(larfg)
LUMO_INSTANTIATE(deviceLarfg)

}  // namespace lumo
