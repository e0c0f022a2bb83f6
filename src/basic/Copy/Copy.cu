#include "basic/copy_part.h"

using cudalib::Kernel;
using cudalib::Map1D;
using cudalib::OnElement;
using cudalib::OnMatrix;
using cudalib::OnVector;
using lumo::converted;
using lumo::RealOf;

template <class From, class To>
LUMO_DEVICE void copyVector(int n, const From* from, int incFrom, To* to, int incTo) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) {
            to[i * std::size_t(incTo)] = converted<To>(from[i * std::size_t(incFrom)]);
        });
    });
}

template <class From, class To>
LUMO_DEVICE void copySingle(const From* from, To* to) {
    cudalib::kernel(
        [&](cudalib::Single single) { single.once([&] { *to = converted<To>(*from); }); });
}

template <class T>
LUMO_KERNEL void CopyMatrix_k(int m, int n, T* a, int lda, T* b, int ldb) {
    lumo::copyPart<lumo::Part::whole>(m, n, a, lda, b, ldb);
}
template <class Map, class T>
LUMO_KERNEL void CopyVector_k(int n, T* x, int incx, T* y, int incy) {
    copyVector(n, x, incx, y, incy);
}
// The destination comes first here.
template <class Map, class T>
LUMO_KERNEL void CopyVectorRealToComplex_k(int n, T* x, int incx, RealOf<T>* y, int incy) {
    copyVector(n, y, incy, x, incx);
}
template <class Map, class T>
LUMO_KERNEL void CopyVectorComplexToReal_k(int n, T* x, int incx, RealOf<T>* y, int incy) {
    copyVector(n, x, incx, y, incy);
}
template <class T>
LUMO_KERNEL void CopySingle_k(T* x, T* y) {
    copySingle(x, y);
}
template <class T>
LUMO_KERNEL void CopyRealToComplex_k(RealOf<T>* x, T* y) {
    copySingle(x, y);
}
template <class T>
LUMO_KERNEL void CopyComplexToReal_k(T* x, RealOf<T>* y) {
    copySingle(x, y);
}

LUMO_REGISTER(lumo::ElementTypes, Kernel<&CopyMatrix_k<T>, OnMatrix<T>>,
              Kernel<&CopyVector_k<Map1D, T>, OnVector<T>>, Kernel<&CopySingle_k<T>, OnElement>)
LUMO_REGISTER(lumo::ComplexTypes, Kernel<&CopyVectorRealToComplex_k<Map1D, T>, OnVector<T>>,
              Kernel<&CopyVectorComplexToReal_k<Map1D, T>, OnVector<T>>,
              Kernel<&CopyRealToComplex_k<T>, OnElement>,
              Kernel<&CopyComplexToReal_k<T>, OnElement>)
