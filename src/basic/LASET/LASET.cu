#include "cudalib/kernel.h"

template <class T>
LUMO_KERNEL void LASET_k(char uplo, int m, int n, T alpha, T beta, T* a, int lda) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            T* to = &cudalib::at(a, lda, 0, j);
            const int diagonal = j < m ? j : m, below = j < m ? j + 1 : m;
            if (uplo != 'L') column.rows(0, diagonal, [&](int i) { to[i] = alpha; });
            column.rows(diagonal, below, [&](int i) { to[i] = beta; });
            if (uplo != 'U') column.rows(below, m, [&](int i) { to[i] = alpha; });
        });
    });
}

template <class T>
struct LasetCost {
    static cudalib::Work of(char uplo, int m, int n, T, T, T*, int) {
        return {double(m) * n * sizeof(T) / (uplo == 'L' || uplo == 'U' ? 2 : 1)};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&LASET_k<T>, LasetCost<T>>)
