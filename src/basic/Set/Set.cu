#include "cudalib/kernel.h"

using cudalib::at;
using cudalib::Map1D;
using cudalib::Map2D;

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

LUMO_REGISTER(lumo::ElementTypes, &SetMatrix_k<Map2D, 0, T>, &SetVector_k<Map1D, 0, T>,
              &SetSingle_k<0, T>, &SetTriangularMatrix_k<0, T>, &SetMatrix_k<Map2D, 1, T>,
              &SetVector_k<Map1D, 1, T>, &SetSingle_k<1, T>, &SetTriangularMatrix_k<1, T>)
