#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "trd/hermitian_tiles/shape.h"

// First a lane has a row of the tile, then a column of it; each row of lanes takes a share of what
// lies across.
template <class T>
LUMO_KERNEL void HermitianTiles_k(int n, const T* a, int lda, const T* x, T* parts) {
    constexpr int order = lumo::hermitianTile<T>, share = order / lumo::hermitianTileRows;
    using Team = cudalib::Team<order, lumo::hermitianTileRows>;
    cudalib::kernel<1024>([&](Team team) LUMO_INLINED {
        const int i = int(team.x()), j = int(team.y());
        if (j > i) return;
        const int top = i * order, left = j * order;
        const int rows = n - top < order ? n - top : order,
                  columns = n - left < order ? n - left : order;
        const T* const corner = &cudalib::at(a, lda, top, left);
        LUMO_SHARED T tile[order][order + 1], sums[Team::Y][order];
        const auto write = [&](T* part, int count) {
            team.barrier();
            team.rows(1, [&](int) {
                team.lanes(count, [&](int lane) {
                    T sum = sums[0][lane];
                    for (int y = 1; y < Team::Y; ++y) sum = sum + sums[y][lane];
                    part[lane] = sum;
                });
            });
        };

        team.rows(Team::Y, [&](int y) {
            const int past = (y + 1) * share < columns ? (y + 1) * share : columns;
            team.lanes(rows, [&](int lane) {
                T sum(0);
                for (int k = y * share; k < past; ++k) {
                    // Above the diagonal stands, conjugated, what is below it.
                    T element = i > j || lane >= k
                                    ? cudalib::at(corner, lda, lane, k)
                                    : lumo::conjugate(cudalib::at(corner, lda, k, lane));
                    if (i == j && lane == k) element = T(lumo::realPart(element));
                    tile[k][lane] = element;
                    sum = sum + element * x[left + k];
                }
                sums[y][lane] = sum;
            });
        });
        write(&cudalib::at(parts, n, top, j), rows);
        if (i == j) return;

        team.barrier();
        team.rows(Team::Y, [&](int y) {
            const int past = (y + 1) * share < rows ? (y + 1) * share : rows;
            team.lanes(columns, [&](int lane) {
                T sum(0);
                for (int k = y * share; k < past; ++k)
                    sum = sum + lumo::conjugate(tile[lane][k]) * x[top + k];
                sums[y][lane] = sum;
            });
        });
        write(&cudalib::at(parts, n, left, i), columns);
    });
}

// A lane has some reads under way at once.
template <class T>
struct HermitianTilesCost {
    static cudalib::Work of(int n, const T*, int, const T*, T*) {
        const double size = double(n) * n;
        return {size * sizeof(T) * (0.5 + 1. / lumo::hermitianTile<T>),
                cudalib::flopsOfProduct<T> * size, 8};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&HermitianTiles_k<T>, HermitianTilesCost<T>>)
