#include "cudalib/kernel.h"

using lumo::RealOf;

template <class T>
LUMO_KERNEL void LARTV_k(int n, T* x, int incx, T* y, int incy, const RealOf<T>* c, const T* s,
                         int incc) {
    cudalib::kernel<4>([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) {
            T& xi = x[i * std::size_t(incx)];
            T& yi = y[i * std::size_t(incy)];
            const RealOf<T> ci = c[i * std::size_t(incc)];
            const T si = s[i * std::size_t(incc)], xOld = xi, yOld = yi;
            xi = ci * xOld + si * yOld;
            yi = ci * yOld - lumo::conjugate(si) * xOld;
        });
    });
}

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&LARTV_k<T>, cudalib::OnVector<T, 6>>)
