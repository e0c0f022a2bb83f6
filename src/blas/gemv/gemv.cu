#include "blas/gemv/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::gemvtRows;
using lumo::gemvtWidth;

// So many lanes share a dot product, and so many rows of lanes work on the columns of a block: a
// warp each on a GPU; on a CPU a vector, and columns enough to a row that x is read once for
// several.
#ifdef __CUDACC__
constexpr int dotWidth = 32, dotRows = 16;
#else
constexpr int dotWidth = 8, dotRows = 8;
#endif

// A block computes a dot product with each of `columns` columns of A. x goes through shared memory
// in chunks of an element a thread, so that its stride counts once a block. Over the first
// wholeRows rows, a multiple of the chunk, no bounds are tested.
template <class T, int teamRows, int unrolled, bool conjugated>
struct DotProducts {
    using Team = cudalib::Team<gemvtWidth, teamRows>;
    static constexpr int width = dotWidth, columns = gemvtWidth, perRow = columns / dotRows;
    // Compilers vectorise several sums of complex products badly.
    static constexpr int together = lumo::isComplex<T> ? 1 : perRow;
    static constexpr int chunk = Team::X * teamRows;

    // What a row of lanes works on: adjacent columns of A and each lane's sum for each of them.
    struct Sums {
        cudalib::LaneValues<Team, T> of[perRow];
    };
    using Columns = const T* [perRow];

    LUMO_DEVICE static T product(T a, T x) { return (conjugated ? lumo::conjugate(a) : a) * x; }

    // Adds `steps` products to a lane's sums for the columns from k on that are taken together.
    template <int steps>
    LUMO_DEVICE static void add(int y, int lane, const Columns& a, int k, int i, const T* x,
                                Sums& sums) {
        T sum[together];
        for (int c = 0; c < together; ++c) sum[c] = product(a[k + c][i + lane], x[i + lane]);
        for (int step = 1; step < steps; ++step) {
            const int at = i + step * width + lane;
            for (int c = 0; c < together; ++c) sum[c] = sum[c] + product(a[k + c][at], x[at]);
        }
        for (int c = 0; c < together; ++c) {
            T& total = sums.of[k + c].at(y, lane);
            total = total + sum[c];
        }
    }

    LUMO_DEVICE static void addChunk(Team team, int y, int count, const Columns& a, const T* x,
                                     Sums& sums) {
        for (int k = 0; k < perRow; k += together) {
            int i = 0;
            for (; i + width * unrolled <= count; i += width * unrolled)
                team.lanes(width, [&](int lane) { add<unrolled>(y, lane, a, k, i, x, sums); });
            for (; i + width <= count; i += width)
                team.lanes(width, [&](int lane) { add<1>(y, lane, a, k, i, x, sums); });
            team.lanes(count - i, [&](int lane) { add<1>(y, lane, a, k, i, x, sums); });
        }
    }

    LUMO_DEVICE static void make(Team team, int m, int n, int wholeRows, T alpha, const T* a,
                                 int lda, T beta, const T* x, int incx, T* y, int incy) {
        LUMO_SHARED T part[chunk];
        LUMO_SHARED T partial[columns][width + 1];
        const long first = team.x() * columns, here = n - first < columns ? n - first : columns;
        const int rowsHere = int(here - 1) / perRow + 1;
        Sums sums;
        team.rows(rowsHere, [&](int row) {
            team.lanes(width, [&](int lane) {
                for (int k = 0; k < perRow; ++k) sums.of[k].at(row, lane) = T(0);
            });
        });
        auto addRows = [&](int from, int count) {
            team.barrier();
            team.rows(teamRows, [&](int row) {
                const int start = row * Team::X, left = count - start;
                if (incx == 1)  // by vectors, on a CPU
                    team.lanes(left,
                               [&](int lane) { part[start + lane] = x[from + start + lane]; });
                else
                    team.lanes(left, [&](int lane) {
                        const int i = start + lane;
                        part[i] = x[std::size_t(from + i) * std::size_t(incx)];
                    });
            });
            team.barrier();
            team.rows(rowsHere, [&](int row) {
                // The last row may have columns to spare: they are the last one once more.
                Columns own;
                for (int k = 0; k < perRow; ++k) {
                    const long column = row * perRow + k;
                    own[k] = a + from + (first + (column < here ? column : here - 1)) * lda;
                }
                addChunk(team, row, count, own, part, sums);
            });
        };
        if (!(alpha == T(0))) {
            for (int from = 0; from < wholeRows; from += chunk) addRows(from, chunk);
            if (wholeRows < m) addRows(wholeRows, m - wholeRows);
        }

        // To four lanes first, then a lane takes a column.
        constexpr int few = 4;
        team.rows(rowsHere, [&](int row) {
            for (int k = 0; k < perRow; ++k)
                team.lanes(width, [&](int lane) {
                    partial[row * perRow + k][lane] = sums.of[k].at(row, lane);
                });
        });
        team.barrier();
        team.rows(rowsHere, [&](int row) {
            for (int k = 0; k < perRow; ++k)
                team.lanes(few, [&](int lane) {
                    T* const from = partial[row * perRow + k];
                    T sum = from[lane];
                    for (int i = few; i < width; i += few) sum = sum + from[lane + i];
                    from[lane] = sum;
                });
        });
        team.barrier();
        team.rows(1, [&](int) {
            team.lanes(here, [&](int lane) {
                T sum = partial[lane][0];
                for (int i = 1; i < few; ++i) sum = sum + partial[lane][i];
                T& result = y[std::size_t(first + lane) * std::size_t(incy)];
                result = beta == T(0) ? alpha * sum : alpha * sum + beta * result;
            });
        });
    }
};

template <class T, int rows, int unrolled, bool conjugated>
LUMO_KERNEL void gemvt_k(int m, int n, int wholeRows, T alpha, const T* a, int lda, T beta,
                         const T* x, int incx, T* y, int incy) {
    using Products = DotProducts<T, rows, unrolled, conjugated>;
    cudalib::kernel<64>([&](typename Products::Team team) LUMO_INLINED {
        Products::make(team, m, n, wholeRows, alpha, a, lda, beta, x, incx, y, incy);
    });
}

// A row of 32 lanes goes along two columns, eight reads at a time.
template <class T>
struct GemvtCost {
    static cudalib::Work of(int m, int n, int, T, const T*, int, T, const T*, int, T*, int) {
        const double size = double(m) * n;
        return {size * sizeof(T), cudalib::flopsOfProduct<T> * size, m / 128. + 8};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&gemvt_k<T, gemvtRows, 8, false>, GemvtCost<T>>,
              cudalib::Kernel<&gemvt_k<T, gemvtRows, 8, true>, GemvtCost<T>>)
