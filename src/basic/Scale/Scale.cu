#include "cudalib/kernel.h"

template <class Map, class T, bool multiplies>
LUMO_KERNEL void Scale_k(int n, T* x, T* alpha, int incx) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        const T factor = *alpha;
        elements.each(n, [&](std::size_t i) {
            T& element = x[i * std::size_t(incx)];
            element = multiplies ? element * factor : element / factor;
        });
    });
}

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&Scale_k<cudalib::Map1D, T, true>, cudalib::OnVector<T>>,
              cudalib::Kernel<&Scale_k<cudalib::Map1D, T, false>, cudalib::OnVector<T>>)
