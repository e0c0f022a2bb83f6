#include "basic/PermuteRows/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using cudalib::Map2D;
using lumo::columnsOfBlock;
using lumo::RowMoves;

using Movers = cudalib::Team<lumo::movedAtOnce, 1>;

// A lane moves one row's elements. All are read before the first is written.
template <class T>
LUMO_DEVICE void move(int n, T* a, int lda, const RowMoves& moves) {
    cudalib::kernel<lumo::movedAtOnce>([&](Movers team) LUMO_INLINED {
        const int first = int(team.x()) * columnsOfBlock;
        cudalib::LaneValues<Movers, T> kept[columnsOfBlock];
        for (int c = 0; c < columnsOfBlock; ++c)
            if (first + c < n)
                team.lanes(moves.count, [&](int x) {
                    kept[c].at(0, x) = cudalib::at(a, lda, int(moves.from[x]), first + c);
                });
        team.barrier();
        for (int c = 0; c < columnsOfBlock; ++c)
            if (first + c < n)
                team.lanes(moves.count, [&](int x) {
                    if (moves.to[x] != moves.from[x])
                        cudalib::at(a, lda, int(moves.to[x]), first + c) = kept[c].at(0, x);
                });
    });
}

template <class T>
LUMO_KERNEL void PermuteRows_k(int n, T* a, int lda, LUMO_GRID_CONSTANT RowMoves moves) {
    move(n, a, lda, moves);
}

// The same by a table that the device has made.
template <class T>
LUMO_KERNEL void PermuteRowsThere_k(int n, T* a, int lda, const RowMoves* moves) {
    move(n, a, lda, *moves);
}

// Row i of dst := row rows[i] of src.
template <class Map, class T>
LUMO_KERNEL void GatherRows_k(int m, int n, const T* src, int ldsrc, const int* rows, T* dst,
                              int lddst) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(n, [&](auto column, int j) {
            const T* from = &cudalib::at(src, ldsrc, 0, j);
            T* to = &cudalib::at(dst, lddst, 0, j);
            column.rows(0, m, [&](int i) { to[i] = from[rows[i]]; });
        });
    });
}

LUMO_REGISTER(lumo::ElementTypes, &PermuteRows_k<T>, &PermuteRowsThere_k<T>,
              &GatherRows_k<Map2D, T>)
