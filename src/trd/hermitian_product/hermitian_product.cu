#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/packs.h"
#include "trd/hermitian_product/shape.h"

// So many lanes share a column: all on a GPU, one, which has packs of it, on a CPU.
#ifdef __CUDACC__
constexpr int columnLanes = lumo::hermitianProductLanes;
#else
constexpr int columnLanes = 1;
#endif

// The first column of a part; parts have the same share of the triangle, in whole groups of
// columns.
LUMO_DEVICE int firstColumn(int n, int part, int count, int group) {
    if (part == count) return n;
    const double left = std::sqrt(1 - double(part) / count);
    return int(n * (1 - left)) / group * group;
}

// Columns j, j + 1, ... below their common rows, and what they are multiplied by.
template <class T, int bytes>
struct ColumnGroup {
    static constexpr int count = lumo::hermitianColumns<T>, pack = cudalib::packed<T, bytes>;
    using Team = cudalib::Team<lumo::hermitianProductLanes, 1>;

    static_assert(columnLanes == 1 || pack == 1, "what is left of a column is one lane's");

    const T* at[count];
    T factor[count];
    std::size_t next;  // from a column to the same one of the next group

    // y += the columns times their factors, from row `from` on; sums: a lane's share of their
    // products with x. Packs are read where a column's are aligned.
    LUMO_DEVICE void multiply(int lane, long from, long n, const T* x, T* y,
                              T (&sums)[count]) const {
        for (int k = 0; k < count; ++k) sums[k] = T(0);
        if constexpr (pack > 1) {
            const long odd =
                long(reinterpret_cast<std::uintptr_t>(at[0] + from) / sizeof(T)) % pack;
            const long begin = odd == 0 ? from : from + pack - odd;
            Products<cudalib::smallestPack> head;
            addPacks(from, begin < n ? begin : n, x, y, head, sums);
            from = begin;
        }
        Products<bytes> products;
        addPacks(from + lane, n, x, y, products, sums);
    }

  private:
    template <int size>
    struct Products {
        cudalib::DotProduct<T, size> of[count];
    };

    // Rows i to `end`, in packs; what is left, in halves of them and so on, with the halves of the
    // products so far.
    template <int size>
    LUMO_DEVICE void addPacks(long i, long end, const T* x, T* y, Products<size>& products,
                              T (&sums)[count]) const {
        constexpr int length = cudalib::packed<T, size>;
        for (; i + length <= end; i += columnLanes * length) {
            cudalib::Combination<T, size> sum;
            for (int k = 0; k < count; ++k) {
                products.of[k].add(at[k] + i, x + i);
                sum.add(at[k] + i, factor[k]);
                if constexpr (size == bytes) cudalib::prefetch<false>(at[k] + i, next);
            }
            sum.addTo(y + i);
        }
        if constexpr (length > 1 && size > cudalib::smallestPack) {
            Products<size / 2> halves;
            for (int k = 0; k < count; ++k)
                halves.of[k] = cudalib::DotProduct<T, size / 2>(products.of[k]);
            addPacks(i, end, x, y, halves, sums);
        } else {
            for (int k = 0; k < count; ++k) sums[k] = sums[k] + products.of[k].total();
            for (; i < end; i += columnLanes) add(i, x, y, sums);
        }
    }

    LUMO_DEVICE void add(long row, const T* x, T* y, T (&sums)[count]) const {
        T sum = y[row];
        for (int k = 0; k < count; ++k) {
            const T element = at[k][row];
            sum = sum + element * factor[k];
            sums[k] = sums[k] + lumo::conjugate(element) * x[row];
        }
        y[row] = sum;
    }
};

template <class T, int bytes>
LUMO_KERNEL void HermitianProduct_k(int n, int count, const T* a, int lda, const T* x, T* parts,
                                    int ldparts) {
    using Group = ColumnGroup<T, bytes>;
    cudalib::kernel<1024>([&](typename Group::Team team) LUMO_INLINED {
        constexpr int columns = Group::count;
        const int part = int(team.x()), begin = firstColumn(n, part, count, columns),
                  end = firstColumn(n, part + 1, count, columns);
        T* const y = parts + part * std::size_t(ldparts);
        LUMO_SHARED T shared[columns][columnLanes + 1];
        for (long i = begin; i < n; i += team.X)
            team.lanes(n - i, [&](int lane) { y[i + lane] = T(0); });
        team.barrier();
        for (int j = begin; j < end; j += columns) {
            // The last group may have columns to spare: the last one once more, times 0.
            const int here = end - j < columns ? end - j : columns;
            Group group;
            group.next = std::size_t(columns) * std::size_t(lda);
            for (int k = 0; k < columns; ++k) {
                const int column = j + (k < here ? k : here - 1);
                group.at[k] = &cudalib::at(a, lda, 0, column);
                group.factor[k] = k < here ? x[column] : T(0);
            }
            team.lanes(columnLanes, [&](int lane) {
                T sums[columns];
                group.multiply(lane, j + here, n, x, y, sums);
                for (int k = 0; k < columns; ++k) shared[k][lane] = sums[k];
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
            team.lanes(columns, [&](int lane) {
                if (lane >= here) return;
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
                groups * (double(n) / 2 / lumo::hermitianProductLanes + 10)};
    }
};
template <class T>
struct HermitianSumCost {
    static cudalib::Work of(int n, int count, bool whole, const T*, int, T*) {
        return {double(n) * (1 + (whole ? 1 : 2. / 3) * count) * sizeof(T), 0, count / 4.};
    }
};

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&HermitianProduct_k<T, cudalib::usualPack>, HermitianProductCost<T>,
                              &HermitianProduct_k<T, cudalib::widePack>>,
              cudalib::Kernel<&HermitianSum_k<T>, HermitianSumCost<T>>)
