#include "basic/Set/Set.h"

#include "cudalib/launch.h"

template <class Map, int K, class T>
void SetMatrix_k(int m, int n, T* a, int lda);
template <class Map, int K, class T>
void SetVector_k(int n, T* x, int incx);
template <int K, class T>
void SetSingle_k(T* p);
template <int K, class T>
void SetTriangularMatrix_k(bool upper, bool unitDiag, int m, int n, T* a, int lda, T diagValue);

namespace lumo {
namespace {

using cudalib::Map1D;
using cudalib::Map2D;

template <int K, class T>
cudaError_t setSlab(const cudalib::Slab& slab, T* a, int lda) {
    return cudalib::launch(Map2D(slab.rows, slab.columns), &SetMatrix_k<Map2D, K, T>, slab.rows,
                           slab.columns, slab.of(a, lda), lda);
}

}  // namespace

template <int K, class T>
void setMatrix(int m, int n, T* a, int lda) {
    if (lda >= 1)
        cudalib::forEachSlab(m, n,
                             [&](const cudalib::Slab& slab) { return setSlab<K>(slab, a, lda); });
}

template <int K, class T>
void setVector(int n, T* x, int incx) {
    if (n >= 1 && incx >= 1) cudalib::launch(Map1D(n), &SetVector_k<Map1D, K, T>, n, x, incx);
}

template <int K, class T>
void setElement(T* p) {
    cudalib::launch(cudalib::OneThread(), &SetSingle_k<K, T>, p);
}

template <int K, class T>
void setTriangle(char uplo, char diag, int m, int n, T* a, int lda) {
    const bool upper = uplo == 'U', unitDiag = diag == 'U' || diag == 'Z';
    const char opposite = upper ? 'L' : 'U';
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        const char part = slab.part(opposite);
        if (!part) return cudaSuccess;
        if (part != opposite) return setSlab<K>(slab, a, lda);
        return cudalib::launch(Map2D(slab.rows, slab.columns), &SetTriangularMatrix_k<K, T>, upper,
                               unitDiag, slab.rows, slab.columns, slab.of(a, lda), lda,
                               T(unitDiag ? 1 : 0));
    });
}

#define LUMO_SETTERS(K, T)                         \
    template void setMatrix<K>(int, int, T*, int); \
    template void setVector<K>(int, T*, int);      \
    template void setElement<K>(T*);               \
    template void setTriangle<K>(char, char, int, int, T*, int);
LUMO_SETTERS(0, float)
LUMO_SETTERS(1, float)
LUMO_SETTERS(0, double)
LUMO_SETTERS(1, double)
LUMO_SETTERS(0, Complex<float>)
LUMO_SETTERS(1, Complex<float>)
LUMO_SETTERS(0, Complex<double>)
LUMO_SETTERS(1, Complex<double>)

}  // namespace lumo
