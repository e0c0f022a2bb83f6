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

// Of the rows that move, half are neighbours and half lie alone.
template <class T>
cudalib::Work permutingWork(int n, int lda, double rows) {
    cudalib::Work w{double(n) * rows * (sizeof(T) + cudalib::bytesOfLoneElement<T>)};
    w.turns = 2;
    w.reach = double(n) * lda * sizeof(T);
    return w;
}

template <class T>
struct PermuteRowsCost {
    static cudalib::Work of(int n, T*, int lda, const RowMoves& moves) {
        return permutingWork<T>(n, lda, moves.count);
    }
};
// How many rows move the device alone knows: of a panel of 32 columns 64, as a rule.
template <class T>
struct PermuteRowsThereCost {
    static cudalib::Work of(int n, T*, int lda, const RowMoves*) {
        cudalib::Work w = permutingWork<T>(n, lda, lumo::interchangesAtOnce);
        ++w.turns;  // the table
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&PermuteRows_k<T>, PermuteRowsCost<T>>,
              cudalib::Kernel<&PermuteRowsThere_k<T>, PermuteRowsThereCost<T>>,
              cudalib::Kernel<&GatherRows_k<Map2D, T>, cudalib::OnMatrix<T, 3>>)
