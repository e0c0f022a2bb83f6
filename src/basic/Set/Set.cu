#include "cudalib/kernel.h"

using cudalib::at;
using cudalib::Kernel;
using cudalib::Map1D;
using cudalib::Map2D;
using cudalib::OnElement;
using cudalib::OnMatrix;
using cudalib::OnVector;

template <class Map, int K, class T>
LUMO_KERNEL void SetMatrix_k(int m, int n, T* a, int lda) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            T* to = &at(a, lda, 0, j);
            column.rows(0, m, [&](int i) { to[i] = T(K); });
        });
    });
}

template <class Map, int K, class T>
LUMO_KERNEL void SetVector_k(int n, T* x, int incx) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) { x[i * std::size_t(incx)] = T(K); });
    });
}

template <int K, class T>
LUMO_KERNEL void SetSingle_k(T* p) {
    cudalib::kernel([&](cudalib::Single single) { single.once([&] { *p = T(K); }); });
}

// `upper`, `unitDiag`: of the triangle that remains.
template <int K, class T>
LUMO_KERNEL void SetTriangularMatrix_k(bool upper, bool unitDiag, int m, int n, T* a, int lda,
                                       T diagValue) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            T* to = &at(a, lda, 0, j);
            const int diagonal = j < m ? j : m, below = j < m ? j + 1 : m;
            column.rows(upper ? below : 0, upper ? m : diagonal, [&](int i) { to[i] = T(K); });
            if (unitDiag) column.rows(diagonal, below, [&](int i) { to[i] = diagValue; });
        });
    });
}

template <class T>
struct SetTriangleCost {
    static cudalib::Work of(bool, bool, int m, int n, T*, int, T) {
        return {double(m) * n * sizeof(T) / 2};
    }
};

LUMO_REGISTER(lumo::ElementTypes, Kernel<&SetMatrix_k<Map2D, 0, T>, OnMatrix<T, 1>>,
              Kernel<&SetVector_k<Map1D, 0, T>, OnVector<T, 1>>,
              Kernel<&SetSingle_k<0, T>, OnElement>,
              Kernel<&SetTriangularMatrix_k<0, T>, SetTriangleCost<T>>,
              Kernel<&SetMatrix_k<Map2D, 1, T>, OnMatrix<T, 1>>,
              Kernel<&SetVector_k<Map1D, 1, T>, OnVector<T, 1>>,
              Kernel<&SetSingle_k<1, T>, OnElement>,
              Kernel<&SetTriangularMatrix_k<1, T>, SetTriangleCost<T>>)
