#include "basic/Copy/Copy.h"

#include "cudalib/launch.h"

using lumo::RealOf;

template <class T>
void CopyMatrix_k(int m, int n, T* a, int lda, T* b, int ldb);
template <class Map, class T>
void CopyVector_k(int n, T* x, int incx, T* y, int incy);
template <class Map, class T>
void CopyVectorRealToComplex_k(int n, T* x, int incx, RealOf<T>* y, int incy);
template <class Map, class T>
void CopyVectorComplexToReal_k(int n, T* x, int incx, RealOf<T>* y, int incy);
template <class T>
void CopySingle_k(T* x, T* y);
template <class T>
void CopyRealToComplex_k(RealOf<T>* x, T* y);
template <class T>
void CopyComplexToReal_k(T* x, RealOf<T>* y);

namespace lumo {
namespace {

using cudalib::Map1D;

template <class Kernel, class X, class Y>
void launchOnVectors(Kernel kernel, int n, X* x, int incx, Y* y, int incy) {
    if (n > 0 && incx >= 1 && incy >= 1) cudalib::launch(Map1D(n), kernel, n, x, incx, y, incy);
}

}  // namespace

template <class T>
void copyMatrix(int m, int n, const T* a, int lda, T* b, int ldb) {
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns), &CopyMatrix_k<T>, slab.rows,
                               slab.columns, slab.of(a, lda), lda, slab.of(b, ldb), ldb);
    });
}

template <class T>
void copyVector(int n, const T* x, int incx, T* y, int incy) {
    launchOnVectors(&CopyVector_k<Map1D, T>, n, x, incx, y, incy);
}

template <class R>
void copyVectorRealToComplex(int n, Complex<R>* x, int incx, const R* y, int incy) {
    launchOnVectors(&CopyVectorRealToComplex_k<Map1D, Complex<R>>, n, x, incx, y, incy);
}

template <class R>
void copyVectorComplexToReal(int n, const Complex<R>* x, int incx, R* y, int incy) {
    launchOnVectors(&CopyVectorComplexToReal_k<Map1D, Complex<R>>, n, x, incx, y, incy);
}

template <class T>
void copyElement(const T* x, T* y) {
    cudalib::launch(cudalib::OneThread(), &CopySingle_k<T>, x, y);
}

template <class R>
void copyElementRealToComplex(const R* x, Complex<R>* y) {
    cudalib::launch(cudalib::OneThread(), &CopyRealToComplex_k<Complex<R>>, x, y);
}

template <class R>
void copyElementComplexToReal(const Complex<R>* x, R* y) {
    cudalib::launch(cudalib::OneThread(), &CopyComplexToReal_k<Complex<R>>, x, y);
}

LUMO_INSTANTIATE(copyMatrix)
LUMO_INSTANTIATE(copyVector)
LUMO_INSTANTIATE(copyElement)
LUMO_INSTANTIATE_REAL(copyVectorRealToComplex)
LUMO_INSTANTIATE_REAL(copyVectorComplexToReal)
LUMO_INSTANTIATE_REAL(copyElementRealToComplex)
LUMO_INSTANTIATE_REAL(copyElementComplexToReal)

}  // namespace lumo
