#include "basic/Conjugate/Conjugate.h"

#include "cudalib/launch.h"

namespace lumo {

template <class Map, class T>
void ConjugateVector_k(int n, T* x, int incx);
template <class Map, class T>
void ConjugateMatrix_k(int m, int n, T* a, int lda);
template <class Map, class T>
void ConjugateMatrixLower_k(int m, int n, T* a, int lda);

namespace {

using cudalib::Map1D;
using cudalib::Map2D;

template <class T>
void conjugatePart(char uplo, int m, int n, T* a, int lda) {
    if (lda < 1) return;
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        const char part = slab.part(uplo);
        if (!part) return cudaSuccess;
        auto kernel =
            part == 'L' ? &ConjugateMatrixLower_k<Map2D, T> : &ConjugateMatrix_k<Map2D, T>;
        return cudalib::launch(Map2D(slab.rows, slab.columns), kernel, slab.rows, slab.columns,
                               slab.of(a, lda), lda);
    });
}

}  // namespace

template <class T>
void conjugateVector(int n, T* x, int incx) {
    if (n >= 1 && incx >= 1) cudalib::launch(Map1D(n), &ConjugateVector_k<Map1D, T>, n, x, incx);
}

template <class T>
void conjugateMatrix(int m, int n, T* a, int lda) {
    conjugatePart('A', m, n, a, lda);
}

template <class T>
void conjugateMatrixLower(int m, int n, T* a, int lda) {
    conjugatePart('L', m, n, a, lda);
}

LUMO_INSTANTIATE(conjugateVector)
LUMO_INSTANTIATE_COMPLEX(conjugateMatrix)
LUMO_INSTANTIATE_COMPLEX(conjugateMatrixLower)

}  // namespace lumo
