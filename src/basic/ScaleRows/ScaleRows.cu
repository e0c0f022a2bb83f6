#include "cudalib/kernel.h"

template <class Map, class T>
LUMO_KERNEL void ScaleRows_k(int m, int n, const lumo::RealOf<T>* factors, T* a, int lda) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            T* const x = &cudalib::at(a, lda, 0, j);
            column.rows(0, m, [&](int i) { x[i] = T(factors[i]) * x[i]; });
        });
    });
}

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&ScaleRows_k<cudalib::Map2D, T>, cudalib::OnMatrix<T>>)
