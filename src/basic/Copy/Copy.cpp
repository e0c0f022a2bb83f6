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

#define LUMO_COPIES(T)                                          \
    template void copyMatrix(int, int, const T*, int, T*, int); \
    template void copyVector(int, const T*, int, T*, int);      \
    template void copyElement(const T*, T*);
LUMO_COPIES(float)
LUMO_COPIES(double)
LUMO_COPIES(Complex<float>)
LUMO_COPIES(Complex<double>)

#define LUMO_CONVERSIONS(R)                                                      \
    template void copyVectorRealToComplex(int, Complex<R>*, int, const R*, int); \
    template void copyVectorComplexToReal(int, const Complex<R>*, int, R*, int); \
    template void copyElementRealToComplex(const R*, Complex<R>*);               \
    template void copyElementComplexToReal(const Complex<R>*, R*);
LUMO_CONVERSIONS(float)
LUMO_CONVERSIONS(double)

}  // namespace lumo
