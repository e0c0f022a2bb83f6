#include "basic/magnitude.h"
#include "cudalib/kernel.h"

using lumo::Complex;
using lumo::conjugate;
using lumo::RealOf;
using lumo::realPart;

// A complex instance names its real type as well.
template <class T, class... Real>
LUMO_KERNEL void LAR2V_k(int n, T* x, T* y, T* z, int incx, const RealOf<T>* c, const T* s,
                         int incc) {
    cudalib::kernel<8>([&](cudalib::Elements elements) LUMO_INLINED {
        using R = RealOf<T>;
        elements.each(n, [&](std::size_t i) {
            const std::size_t ix = i * std::size_t(incx), ic = i * std::size_t(incc);
            const R xi = realPart(x[ix]), yi = realPart(y[ix]), ci = c[ic];
            const T zi = z[ix], si = s[ic];
            const T sz = si * zi, cz = ci * zi;
            const T lower = cz - conjugate(si) * T(xi);
            const T upper = conjugate(cz) + si * T(yi);
            const R left = ci * xi + realPart(sz), right = ci * yi - realPart(sz);
            x[ix] = T(ci * left + realPart(conjugate(si) * upper));
            y[ix] = T(ci * right - realPart(si * lower));
            // The imaginary part of sz is all that `right` lacks of a complex product.
            z[ix] = ci * lower + conjugate(si) * (sz - T(realPart(sz)) + T(right));
        });
    });
}

LUMO_REGISTER(lumo::RealTypes, cudalib::Kernel<&LAR2V_k<T>, cudalib::OnVector<T, 8>>,
              cudalib::Kernel<&LAR2V_k<Complex<T>, T>, cudalib::OnVector<Complex<T>, 8>>)
