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

LUMO_REGISTER(lumo::ElementTypes, &Transpose_k<T, false>, &Transpose_k<T, true>,
              &TransposeInplace_k<T, false>, &TransposeInplace_k<T, true>)
