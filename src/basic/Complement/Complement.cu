#include "cudalib/kernel.h"

template <class Map, class T>
LUMO_KERNEL void ComplementVector_k(int n, T* x, int incx, T* y, int incy) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(
            n, [&](std::size_t i) { y[i * std::size_t(incy)] = T(1) - x[i * std::size_t(incx)]; });
    });
}

template <class T>
LUMO_KERNEL void ComplementSingle_k(T* x, T* y) {
    cudalib::kernel([&](cudalib::Single single) { single.once([&] { *y = T(1) - *x; }); });
}

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&ComplementVector_k<cudalib::Map1D, T>, cudalib::OnVector<T>>,
              cudalib::Kernel<&ComplementSingle_k<T>, cudalib::OnElement>)
