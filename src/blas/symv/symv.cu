#include "blas/symv/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::symvTile;

// An element of a vector whose increment may be negative.
template <class T>
LUMO_DEVICE T& element(T* x, int incx, long i) {
    return x[i * incx];
}

template <class T>
LUMO_KERNEL void symv_init_k(int n, T /*alpha*/, const T* /*a*/, int /*lda*/, const T* /*x*/,
                             int /*incx*/, T beta, T* y, int incy) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) {
            T& yi = element(y, incy, long(i));
            yi = beta == T(0) ? T(0) : beta * yi;
        });
    });
}

// A block adds one tile of y. The rows of A that belong to it are stored as such on one side of the
// diagonal, where a lane owns a row, and as columns on the other, where the lanes share a column.
template <class T, uploType uplo, boundsType bounds, int order>
struct TileProduct {
    using Team = cudalib::Team<order, 1>;
    using Values = cudalib::LaneValues<Team, T>;
    static constexpr int group = 16;  // columns whose lanes' sums fit into shared memory

    LUMO_DEVICE static void add(Team team, int n, T alpha, const T* a, int lda, const T* x,
                                int incx, T* y, int incy) {
        if (alpha == T(0)) return;
        const long first = team.x() * order, past = first + order;
        const long here = bounds == boundsTested && n - first < order ? n - first : order;
        Values sum;
        team.lanes(order, [&](int lane) { sum.at(0, lane) = T(0); });

        const long rowsFrom = uplo == uploLower ? 0 : past, rowsTo = uplo == uploLower ? first : n;
        for (long j = rowsFrom; j < rowsTo; ++j) {
            const T xj = element(x, incx, j);
            const T* const column = a + j * lda + first;
            team.lanes(here,
                       [&](int lane) { sum.at(0, lane) = sum.at(0, lane) + column[lane] * xj; });
        }
        for (int j = 0; j < here; ++j) {
            const T xj = element(x, incx, first + j);
            const T* const column = a + (first + j) * lda + first;
            team.lanes(here, [&](int lane) {
                const bool stored = uplo == uploLower ? lane >= j : lane <= j;
                const T value = stored ? column[lane] : a[(first + lane) * lda + first + j];
                sum.at(0, lane) = sum.at(0, lane) + value * xj;
            });
        }
        const long from = uplo == uploLower ? past : 0, to = uplo == uploLower ? n : first;
        if (from < to)
            for (int begin = 0; begin < here; begin += group)
                addColumns(team, begin, here, from, to, a + first * lda, lda, x, incx, sum);

        team.lanes(here, [&](int lane) {
            T& yi = element(y, incy, first + lane);
            yi = yi + alpha * sum.at(0, lane);
        });
    }

    // For lanes begin, ... of a group: the dot product of x with the lane's column of A, both from
    // `from` to `to`.
    LUMO_DEVICE static void addColumns(Team team, int begin, long here, long from, long to,
                                       const T* a, int lda, const T* x, int incx, Values& sum) {
        LUMO_SHARED T partial[group][order + 1];
        const int columns = int(here - begin < group ? here - begin : group);
        team.barrier();  // the group before may still be read
        for (int k = 0; k < columns; ++k) {
            const T* const column = a + long(begin + k) * lda;
            Values dot;
            team.lanes(order, [&](int lane) { dot.at(0, lane) = T(0); });
            for (long i = from; i < to; i += order)
                team.lanes(bounds == boundsTested ? to - i : order, [&](int lane) {
                    dot.at(0, lane) =
                        dot.at(0, lane) + column[i + lane] * element(x, incx, i + lane);
                });
            team.lanes(order, [&](int lane) { partial[k][lane] = dot.at(0, lane); });
        }
        team.barrier();
        team.lanes(begin + columns, [&](int lane) {
            if (lane < begin) return;
            T total = sum.at(0, lane);
            for (int i = 0; i < order; ++i) total = total + partial[lane - begin][i];
            sum.at(0, lane) = total;
        });
    }
};

template <class T, uploType uplo, boundsType bounds, int order>
LUMO_KERNEL void symv_k(int n, T alpha, const T* a, int lda, const T* x, int incx, T /*beta*/, T* y,
                        int incy) {
    cudalib::kernel<1024>([&](cudalib::Team<order, 1> team) LUMO_INLINED {
        TileProduct<T, uplo, bounds, order>::add(team, n, alpha, a, lda, x, incx, y, incy);
    });
}

// Each stored element is read for its row and for its column.
template <class T>
struct SymvCost {
    static cudalib::Work of(int n, T, const T*, int, const T*, int, T, T*, int) {
        const double size = double(n) * n;
        return {size * sizeof(T), cudalib::flopsOfProduct<T> * size, double(n) / symvTile};
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&symv_init_k<T>, cudalib::OnVector<T>>,
              cudalib::Kernel<&symv_k<T, uploLower, boundsIgnored, symvTile>, SymvCost<T>>,
              cudalib::Kernel<&symv_k<T, uploLower, boundsTested, symvTile>, SymvCost<T>>,
              cudalib::Kernel<&symv_k<T, uploUpper, boundsIgnored, symvTile>, SymvCost<T>>,
              cudalib::Kernel<&symv_k<T, uploUpper, boundsTested, symvTile>, SymvCost<T>>)
