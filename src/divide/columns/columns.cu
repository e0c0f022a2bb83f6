#include <algorithm>

#include "cudalib/kernel.h"
#include "divide/columns/shape.h"
#include "divide/merge.h"

using lumo::ColumnMove;
using lumo::ColumnRotation;
using lumo::Merge;

using RowTeam = cudalib::Team<lumo::rotatedRows, 1>;

// A lane has a row, and goes through all rotations in their order.
template <class R>
LUMO_KERNEL void RotateColumns_k(int /*count*/, const Merge<R>* merges,
                                 const ColumnRotation<R>* rotations, R* a, int lda) {
    cudalib::kernel<64>([&](RowTeam team) LUMO_INLINED {
        const Merge<R> merge = merges[team.y()];
        const long row = team.x() * team.X, rows = merge.order - row;
        if (rows <= 0) return;
        R* const mine = a + merge.first + row;
        for (int k = 0; k < merge.rotations; ++k) {
            const ColumnRotation<R> r = rotations[merge.rotationsFrom + k];
            R *const x = &cudalib::at(mine, lda, 0, r.x), *const y =
                                                              &cudalib::at(mine, lda, 0, r.y);
            team.lanes(rows, [&](int lane) {
                const R before = x[lane];
                x[lane] = r.c * before + r.s * y[lane];
                y[lane] = r.c * y[lane] - r.s * before;
            });
        }
    });
}

template <class Map, class R>
LUMO_KERNEL void MoveColumns_k(int count, const ColumnMove* moves, const R* a, int lda, R* b,
                               int ldb) {
    cudalib::kernel([&](cudalib::Tile tile) LUMO_INLINED {
        tile.columns(count, [&](auto column, int j) {
            const ColumnMove move = moves[j];
            const R* const from = &cudalib::at(a, lda, 0, move.from);
            R* const to = &cudalib::at(b, ldb, 0, move.to);
            column.rows(move.begin, move.end, [&](int i) { to[i] = from[i]; });
        });
    });
}

template <class Map, class R>
LUMO_KERNEL void TakeElements_k(int n, const int* rows, const R* a, int lda, R* x) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(std::size_t(n),
                      [&](std::size_t j) { x[j] = cudalib::at(a, lda, rows[j], int(j)); });
    });
}

// A rotation waits for the one before.
template <class R>
struct RotateColumnsCost {
    template <class... Rest>
    static cudalib::Work of(int count, const Merge<R>* merges, Rest...) {
        const double elements = lumo::sumOverMerges(
            count, merges, [](const Merge<R>& m) { return 2. * m.order * m.rotations; });
        double most = 0;
        for (int k = 0; k < count; ++k) most = std::max(most, double(merges[k].rotations));
        return {2 * elements * sizeof(R), elements * cudalib::flopsOfRotation<R>, most};
    }
};
template <class R>
struct MoveColumnsCost {
    static cudalib::Work of(int count, const ColumnMove* moves, const R*, int, R*, int) {
        double elements = 0;
        for (int k = 0; k < count; ++k) elements += moves[k].end - moves[k].begin;
        return {2 * elements * sizeof(R)};
    }
};
template <class R>
struct TakeElementsCost {
    static cudalib::Work of(int n, const int*, const R*, int, R*) {
        return {n * (cudalib::bytesOfLoneElement<R> + sizeof(R) + sizeof(int))};
    }
};

LUMO_REGISTER(lumo::RealTypes, cudalib::Kernel<&RotateColumns_k<T>, RotateColumnsCost<T>>,
              cudalib::Kernel<&MoveColumns_k<cudalib::Map2D, T>, MoveColumnsCost<T>>,
              cudalib::Kernel<&TakeElements_k<cudalib::Map1D, T>, TakeElementsCost<T>>)
