#include "cudalib/launch.h"

using lumo::Complex;
using lumo::RealOf;

template <class T>
struct RotatePairsBody : cudalib::KernelBody<cudalib::Elements, 4> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, T* x, int incx, T* y, int incy,
                                const RealOf<T>* c, const T* s, int incc) {
        elements.each(n, [&](std::size_t i) {
            T& xi = x[i * std::size_t(incx)];
            T& yi = y[i * std::size_t(incy)];
            const RealOf<T> ci = c[i * std::size_t(incc)];
            const T si = s[i * std::size_t(incc)], xOld = xi, yOld = yi;
            xi = ci * xOld + si * yOld;
            yi = ci * yOld - lumo::conjugate(si) * xOld;
        });
    }
};

template <class T>
LUMO_KERNEL void LARTV_k(int n, T* x, int incx, T* y, int incy, const RealOf<T>* c, const T* s,
                         int incc) {
    cudalib::kernel<RotatePairsBody<T>>(LUMO_STUB(LARTV_k<T>), n, x, incx, y, incy, c, s, incc);
}

namespace {

template <class T>
std::array<cudalib::Instance, 1> instances() {
    return {{cudalib::instance<&LARTV_k<T>, RotatePairsBody<T>>()}};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
