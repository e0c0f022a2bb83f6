#include "basic/tile.h"
#include "cudalib/kernel.h"

using lumo::TileBuffer;
using lumo::tileOrder;
using lumo::TileTeam;

template <class T, bool conjugated>
LUMO_KERNEL void Transpose_k(T* dst, unsigned long lddst, const T* src, unsigned long ldsrc,
                             unsigned long rows, unsigned long cols) {
    cudalib::kernel([&](TileTeam<T> team) LUMO_INLINED {
        LUMO_SHARED TileBuffer<T, conjugated> tile;
        constexpr long order = tileOrder<T>;
        const long i = team.x() * order, j = team.y() * order;
        const long height = long(rows) - i, width = long(cols) - j;
        tile.load(src + i + j * ldsrc, ldsrc, height, width);
        team.barrier();
        tile.storeTransposed(dst + j + i * lddst, lddst, height, width);
    });
}

// Blocks on and below the diagonal exchange their tile with its mirror image.
template <class T, bool conjugated>
LUMO_KERNEL void TransposeInplace_k(T* a, unsigned long lda, unsigned long n) {
    cudalib::kernel([&](TileTeam<T> team) LUMO_INLINED {
        if (team.x() < team.y()) return;
        LUMO_SHARED TileBuffer<T, conjugated> lower, upper;
        constexpr long order = tileOrder<T>;
        const long i = team.x() * order, j = team.y() * order;
        const long height = long(n) - i, width = long(n) - j;
        lower.load(a + i + j * lda, lda, height, width);
        upper.load(a + j + i * lda, lda, width, height);
        team.barrier();
        lower.storeTransposed(a + j + i * lda, lda, height, width);
        upper.storeTransposed(a + i + j * lda, lda, width, height);
    });
}

template <class T>
struct TransposeCost {
    static cudalib::Work of(T*, unsigned long, const T*, unsigned long, unsigned long rows,
                            unsigned long cols) {
        return {2. * double(rows) * double(cols) * sizeof(T)};
    }
};
template <class T>
struct TransposeInplaceCost {
    static cudalib::Work of(T*, unsigned long, unsigned long n) {
        return {2. * double(n) * double(n) * sizeof(T)};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&Transpose_k<T, false>, TransposeCost<T>>,
              cudalib::Kernel<&Transpose_k<T, true>, TransposeCost<T>>,
              cudalib::Kernel<&TransposeInplace_k<T, false>, TransposeInplaceCost<T>>,
              cudalib::Kernel<&TransposeInplace_k<T, true>, TransposeInplaceCost<T>>)
