#include "cudalib/lane_values.h"
#include "cudalib/launch.h"

using lumo::Complex;

// A block computes 32 dot products with columns of A; a row of lanes has two of the columns, one
// after the other. x goes through shared memory in chunks of an element a lane, so that its stride
// counts once a block. Over the first wholeRows rows, a multiple of the chunk, a lane adds
// `unrolled` products at a time and tests no bounds.
template <class T, int teamRows, int unrolled, bool conjugated>
struct DotProductsBody : cudalib::KernelBody<cudalib::Team<32, teamRows>, 64> {
    using Team = cudalib::Team<32, teamRows>;
    static constexpr int width = Team::X, columns = 32, columnsPerRow = columns / teamRows;
    static constexpr int chunk = width * teamRows;

    LUMO_DEVICE static T product(T a, T x) { return (conjugated ? lumo::conjugate(a) : a) * x; }

    LUMO_DEVICE static void run(Team team, int m, int n, int wholeRows, T alpha, const T* a,
                                int lda, T beta, const T* x, int incx, T* y, int incy) {
        LUMO_SHARED T part[chunk];
        LUMO_SHARED T partial[columns][width + 1];
        const long first = team.x() * columns, here = n - first < columns ? n - first : columns;
        const T* const own = a + std::size_t(first) * std::size_t(lda);
        cudalib::LaneValues<Team, T> sums[columnsPerRow];
        // f(y, k, column) for the block's columns: the k-th of lane row y.
        auto eachColumn = [&](auto f) {
            team.rows(teamRows, [&](int y) {
                for (int k = 0; k < columnsPerRow; ++k)
                    if (y + k * teamRows < here) f(y, k, y + k * teamRows);
            });
        };
        auto load = [&](int from, int count) {
            team.barrier();
            team.rows(teamRows, [&](int y) {
                team.lanes(count - y * width, [&](int lane) {
                    const int i = y * width + lane;
                    part[i] = x[std::size_t(from + i) * std::size_t(incx)];
                });
            });
            team.barrier();
        };

        eachColumn([&](int y, int k, int) {
            team.lanes(width, [&](int lane) { sums[k].at(y, lane) = T(0); });
        });
        if (!(alpha == T(0))) {
            for (int from = 0; from < wholeRows; from += chunk) {
                load(from, chunk);
                eachColumn([&](int y, int k, int column) {
                    const T* const above = own + std::size_t(column) * std::size_t(lda) + from;
                    for (int i = 0; i < chunk; i += width * unrolled)
                        team.lanes(width, [&](int lane) {
                            T sum = product(above[i + lane], part[i + lane]);
                            for (int u = 1; u < unrolled; ++u) {
                                const int at = i + u * width + lane;
                                sum = sum + product(above[at], part[at]);
                            }
                            sums[k].at(y, lane) = sums[k].at(y, lane) + sum;
                        });
                });
            }
            if (const int rest = m - wholeRows) {
                load(wholeRows, rest);
                eachColumn([&](int y, int k, int column) {
                    const T* const above = own + std::size_t(column) * std::size_t(lda) + wholeRows;
                    for (int i = 0; i < rest; i += width)
                        team.lanes(rest - i, [&](int lane) {
                            T& sum = sums[k].at(y, lane);
                            sum = sum + product(above[i + lane], part[i + lane]);
                        });
                });
            }
        }

        // From 32 lanes to 4, then the lanes of one row take a column each.
        constexpr int quarter = width / 8;
        eachColumn([&](int y, int k, int column) {
            team.lanes(width, [&](int lane) { partial[column][lane] = sums[k].at(y, lane); });
        });
        team.barrier();
        eachColumn([&](int, int, int column) {
            team.lanes(quarter, [&](int lane) {
                T sum = partial[column][lane];
                for (int i = quarter; i < width; i += quarter)
                    sum = sum + partial[column][lane + i];
                partial[column][lane] = sum;
            });
        });
        team.barrier();
        team.rows(1, [&](int) {
            team.lanes(here, [&](int lane) {
                T sum = partial[lane][0];
                for (int i = 1; i < quarter; ++i) sum = sum + partial[lane][i];
                T& result = y[std::size_t(first + lane) * std::size_t(incy)];
                result = beta == T(0) ? alpha * sum : alpha * sum + beta * result;
            });
        });
    }
};

template <class T, int rows, int unrolled, bool conjugated>
LUMO_KERNEL void gemvt_k(int m, int n, int wholeRows, T alpha, const T* a, int lda, T beta,
                         const T* x, int incx, T* y, int incy) {
    cudalib::kernel<DotProductsBody<T, rows, unrolled, conjugated>>(
        LUMO_STUB(gemvt_k<T, rows, unrolled, conjugated>), m, n, wholeRows, alpha, a, lda, beta, x,
        incx, y, incy);
}

namespace {

template <class T>
std::array<cudalib::Instance, 2> instances() {
    return {cudalib::instance<&gemvt_k<T, 16, 8, false>, DotProductsBody<T, 16, 8, false>>(),
            cudalib::instance<&gemvt_k<T, 16, 8, true>, DotProductsBody<T, 16, 8, true>>()};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
