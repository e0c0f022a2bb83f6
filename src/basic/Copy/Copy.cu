#include "basic/copy_part.h"

using lumo::Complex;
using lumo::converted;
using lumo::Part;
using lumo::RealOf;

template <class From, class To>
struct CopyVectorBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, const From* from, int incFrom,
                                To* to, int incTo) {
        elements.each(n, [&](std::size_t i) {
            to[i * std::size_t(incTo)] = converted<To>(from[i * std::size_t(incFrom)]);
        });
    }
};

// The destination comes first here.
template <class T>
struct RealToComplexBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, int n, T* x, int incx,
                                const RealOf<T>* y, int incy) {
        CopyVectorBody<RealOf<T>, T>::run(elements, n, y, incy, x, incx);
    }
};

template <class From, class To>
struct CopySingleBody : cudalib::KernelBody<cudalib::Single> {
    LUMO_DEVICE static void run(cudalib::Single single, const From* from, To* to) {
        single.once([&] { *to = converted<To>(*from); });
    }
};

template <class T>
LUMO_KERNEL void CopyMatrix_k(int m, int n, T* a, int lda, T* b, int ldb) {
    cudalib::kernel<lumo::CopyPartBody<Part::whole, T, T>>(LUMO_STUB(CopyMatrix_k<T>), m, n, a, lda,
                                                           b, ldb);
}
template <class Map, class T>
LUMO_KERNEL void CopyVector_k(int n, T* x, int incx, T* y, int incy) {
    cudalib::kernel<CopyVectorBody<T, T>>(LUMO_STUB(CopyVector_k<Map, T>), n, x, incx, y, incy);
}
template <class Map, class T>
LUMO_KERNEL void CopyVectorRealToComplex_k(int n, T* x, int incx, RealOf<T>* y, int incy) {
    cudalib::kernel<RealToComplexBody<T>>(LUMO_STUB(CopyVectorRealToComplex_k<Map, T>), n, x, incx,
                                          y, incy);
}
template <class Map, class T>
LUMO_KERNEL void CopyVectorComplexToReal_k(int n, T* x, int incx, RealOf<T>* y, int incy) {
    cudalib::kernel<CopyVectorBody<T, RealOf<T>>>(LUMO_STUB(CopyVectorComplexToReal_k<Map, T>), n,
                                                  x, incx, y, incy);
}
template <class T>
LUMO_KERNEL void CopySingle_k(T* x, T* y) {
    cudalib::kernel<CopySingleBody<T, T>>(LUMO_STUB(CopySingle_k<T>), x, y);
}
template <class T>
LUMO_KERNEL void CopyRealToComplex_k(RealOf<T>* x, T* y) {
    cudalib::kernel<CopySingleBody<RealOf<T>, T>>(LUMO_STUB(CopyRealToComplex_k<T>), x, y);
}
template <class T>
LUMO_KERNEL void CopyComplexToReal_k(T* x, RealOf<T>* y) {
    cudalib::kernel<CopySingleBody<T, RealOf<T>>>(LUMO_STUB(CopyComplexToReal_k<T>), x, y);
}

namespace {

using cudalib::Map1D;

template <class T>
std::array<cudalib::Instance, 3> copies() {
    return {cudalib::instance<&CopyMatrix_k<T>, lumo::CopyPartBody<Part::whole, T, T>>(),
            cudalib::instance<&CopyVector_k<Map1D, T>, CopyVectorBody<T, T>>(),
            cudalib::instance<&CopySingle_k<T>, CopySingleBody<T, T>>()};
}

template <class R, class T = Complex<R>>
std::array<cudalib::Instance, 4> conversions() {
    return {cudalib::instance<&CopyVectorRealToComplex_k<Map1D, T>, RealToComplexBody<T>>(),
            cudalib::instance<&CopyVectorComplexToReal_k<Map1D, T>, CopyVectorBody<T, R>>(),
            cudalib::instance<&CopyRealToComplex_k<T>, CopySingleBody<R, T>>(),
            cudalib::instance<&CopyComplexToReal_k<T>, CopySingleBody<T, R>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(copies<float>(), copies<double>(),
                                             copies<Complex<float>>(), copies<Complex<double>>(),
                                             conversions<float>(), conversions<double>())};

}  // namespace
