#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"
#include "trd/hermitian_product/shape.h"

// So many lanes share a column: all on a GPU, some vectors' on a CPU.
#ifdef __CUDACC__
constexpr int columnLanes = lumo::hermitianProductLanes, unrolled = 1;
#else
constexpr int columnLanes = 8, unrolled = 2;
#endif

// The first column of a part; parts have the same share of the triangle, in whole groups of
// columns.
LUMO_DEVICE int firstColumn(int n, int part, int count, int group) {
    if (part == count) return n;
    const double left = std::sqrt(1 - double(part) / count);
    return int(n * (1 - left)) / group * group;
}

// Columns j, j + 1, ... below their common rows, and what they are multiplied by.
template <class T>
struct ColumnGroup {
    static constexpr int count = lumo::hermitianColumns<T>;
    using Team = cudalib::Team<lumo::hermitianProductLanes, 1>;
    using Sums = cudalib::LaneValues<Team, T>[count];

    const T* at[count];
    T factor[count];

    // y += the columns times their factors, and sums += their products with x, from row `from` on.
    LUMO_DEVICE void multiply(Team team, long from, long n, const T* x, T* y, Sums& sums) const {
        long i = from;
        for (; i + columnLanes * unrolled <= n; i += columnLanes * unrolled)
            team.lanes(columnLanes, [&](int lane) { add<unrolled>(i, lane, x, y, sums); });
        for (; i < n; i += columnLanes)
            team.lanes(n - i < columnLanes ? n - i : columnLanes,
                       [&](int lane) { add<1>(i, lane, x, y, sums); });
    }

  private:
    template <int steps>
    LUMO_DEVICE void add(long i, int lane, const T* x, T* y, Sums& sums) const {
        T sum[count];
        for (int k = 0; k < count; ++k) sum[k] = sums[k].at(0, lane);
        for (int step = 0; step < steps; ++step) {
            const long row = i + step * columnLanes + lane;
            const T xi = x[row];
            T yi = y[row];
            for (int k = 0; k < count; ++k) {
                const T element = at[k][row];
                yi = yi + element * factor[k];
                sum[k] = sum[k] + lumo::conjugate(element) * xi;
            }
            y[row] = yi;
        }
        for (int k = 0; k < count; ++k) sums[k].at(0, lane) = sum[k];
    }
};

template <class T>
LUMO_KERNEL void HermitianProduct_k(int n, int count, const T* a, int lda, const T* x, T* parts,
                                    int ldparts) {
    using Group = ColumnGroup<T>;
    cudalib::kernel<1024>([&](typename Group::Team team) LUMO_INLINED {
        constexpr int columns = Group::count;
        const int part = int(team.x()), begin = firstColumn(n, part, count, columns),
                  end = firstColumn(n, part + 1, count, columns);
        T* const y = parts + part * std::size_t(ldparts);
        LUMO_SHARED T shared[columns][columnLanes];
        for (long i = begin; i < n; i += team.X)
            team.lanes(n - i, [&](int lane) { y[i + lane] = T(0); });
        team.barrier();
        for (int j = begin; j < end; j += columns) {
            // The last group may have columns to spare: the last one once more, times 0.
            const int here = end - j < columns ? end - j : columns;
            Group group;
            typename Group::Sums sums;
            for (int k = 0; k < columns; ++k) {
                const int column = j + (k < here ? k : here - 1);
                group.at[k] = &cudalib::at(a, lda, 0, column);
                group.factor[k] = k < here ? x[column] : T(0);
            }
            team.lanes(columnLanes, [&](int lane) {
                for (int k = 0; k < columns; ++k) sums[k].at(0, lane) = T(0);
            });
            group.multiply(team, j + here, n, x, y, sums);

            team.lanes(columnLanes, [&](int lane) {
                for (int k = 0; k < columns; ++k) shared[k][lane] = sums[k].at(0, lane);
            });
            team.barrier();
            for (int half = columnLanes / 2; half > 0; half /= 2) {
                team.lanes(half, [&](int lane) {
                    for (int k = 0; k < columns; ++k)
                        shared[k][lane] = shared[k][lane] + shared[k][lane + half];
                });
                team.barrier();
            }
            // The block on the diagonal: a lane has a row.
            team.lanes(here, [&](int lane) {
                T sum = y[j + lane] + shared[lane][0];
                for (int k = 0; k < here; ++k) {
                    const T element = lane >= k
                                          ? cudalib::at(a, lda, j + lane, j + k)
                                          : lumo::conjugate(cudalib::at(a, lda, j + k, j + lane));
                    sum = sum + (lane == k ? T(lumo::realPart(element)) : element) * x[j + k];
                }
                y[j + lane] = sum;
            });
            team.barrier();
        }
    });
}

// Parts have rows from that of their first column on, unless they are `whole`.
template <class T>
LUMO_KERNEL void HermitianSum_k(int n, int count, bool whole, const T* parts, int ldparts, T* y) {
    cudalib::kernel<64>([&](cudalib::Strip rows) LUMO_INLINED {
        cudalib::Strip::Kept<T> sum(rows);
        rows.each(std::size_t(n), [&](std::size_t i) { sum[i] = parts[i]; });
        for (int part = 1; part < count; ++part) {
            const auto first =
                whole ? 0 : std::size_t(firstColumn(n, part, count, lumo::hermitianColumns<T>));
            const T* const from = parts + part * std::size_t(ldparts);
            rows.each(std::size_t(n), [&](std::size_t i) {
                if (i >= first) sum[i] = sum[i] + from[i];
            });
        }
        rows.each(std::size_t(n), [&](std::size_t i) { y[i] = sum[i]; });
    });
}

// The triangle once; a part of the result is read and written again for each group of columns,
// mostly where it is still at hand.
template <class T>
struct HermitianProductCost {
    static cudalib::Work of(int n, int count, const T*, int, const T*, T*, int) {
        const double size = double(n) * n, groups = double(n) / count / lumo::hermitianColumns<T>;
        return {size / 2 * sizeof(T), cudalib::flopsOfProduct<T> * size,
                groups * (double(n) / 2 / columnLanes + 10)};
    }
};
template <class T>
struct HermitianSumCost {
    static cudalib::Work of(int n, int count, bool whole, const T*, int, T*) {
        return {double(n) * (1 + (whole ? 1 : 2. / 3) * count) * sizeof(T), 0, count / 4.};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&HermitianProduct_k<T>, HermitianProductCost<T>>,
              cudalib::Kernel<&HermitianSum_k<T>, HermitianSumCost<T>>)
