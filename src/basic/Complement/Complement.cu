#include "cudalib/launch.h"

using lumo::Complex;

template <class T>
struct ComplementVectorBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, const T* x, int incx, T* y,
                                int incy) {
        elements.each(
            n, [&](std::size_t i) { y[i * std::size_t(incy)] = T(1) - x[i * std::size_t(incx)]; });
    }
};

template <class T>
struct ComplementSingleBody : cudalib::KernelBody<cudalib::Single> {
    LUMO_DEVICE static void run(cudalib::Single single, const T* x, T* y) {
        single.once([&] { *y = T(1) - *x; });
    }
};

template <class Map, class T>
LUMO_KERNEL void ComplementVector_k(int n, T* x, int incx, T* y, int incy) {
    cudalib::kernel<ComplementVectorBody<T>>(LUMO_STUB(ComplementVector_k<Map, T>), n, x, incx, y,
                                             incy);
}
template <class T>
LUMO_KERNEL void ComplementSingle_k(T* x, T* y) {
    cudalib::kernel<ComplementSingleBody<T>>(LUMO_STUB(ComplementSingle_k<T>), x, y);
}

namespace {

template <class T>
std::array<cudalib::Instance, 2> instances() {
    return {cudalib::instance<&ComplementVector_k<cudalib::Map1D, T>, ComplementVectorBody<T>>(),
            cudalib::instance<&ComplementSingle_k<T>, ComplementSingleBody<T>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
