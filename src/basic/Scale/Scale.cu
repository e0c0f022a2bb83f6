#include "cudalib/launch.h"

using lumo::Complex;

template <class T, bool multiplies>
struct ScaleBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, T* x, const T* alpha, int incx) {
        const T factor = *alpha;
        elements.each(n, [&](std::size_t i) {
            T& element = x[i * std::size_t(incx)];
            element = multiplies ? element * factor : element / factor;
        });
    }
};

template <class Map, class T, bool multiplies>
LUMO_KERNEL void Scale_k(int n, T* x, T* alpha, int incx) {
    cudalib::kernel<ScaleBody<T, multiplies>>(LUMO_STUB(Scale_k<Map, T, multiplies>), n, x, alpha,
                                              incx);
}

namespace {

using cudalib::Map1D;

template <class T>
std::array<cudalib::Instance, 2> instances() {
    return {cudalib::instance<&Scale_k<Map1D, T, true>, ScaleBody<T, true>>(),
            cudalib::instance<&Scale_k<Map1D, T, false>, ScaleBody<T, false>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
