#include "brd/both_products/shape.h"
#include "cudalib/kernel.h"
#include "cudalib/packs.h"

// So many lanes share a column, one, which has packs of it, on a CPU; and have read so many of its
// elements when they add.
#ifdef __CUDACC__
constexpr int columnLanes = lumo::bothProductsLanes, unrolled = 2;
#else
constexpr int columnLanes = 1, unrolled = 1;
#endif

// Columns of A that are multiplied by together.
template <class T, int bytes>
struct Columns {
    using Team = cudalib::Team<lumo::bothProductsLanes, 1>;
    static constexpr int count = lumo::columnsTogether<T>, pack = cudalib::packed<T, bytes>;
    static_assert(columnLanes == 1 || pack == 1, "what is left of a column is one lane's");

    // A value for each column.
    struct Values {
        T of[count];
    };

    const T* at[count];
    std::size_t next;  // from a column to the same one of the next group

    // The columns' dot products, n elements of each, with x; for all of the block.
    LUMO_DEVICE Values dotProducts(Team team, int n, const T* x) const {
        LUMO_SHARED T partial[count][columnLanes + 1];
        team.lanes(columnLanes, [&](int lane) {
            Products<bytes> products;
            T sums[count];
            const long left = addPacks(lane * pack, n, x, products, sums);
            for (int k = 0; k < count; ++k) {
                LUMO_ROLLED
                for (long row = left; row < n; row += columnLanes)
                    sums[k] = sums[k] + lumo::conjugate(at[k][row]) * x[row];
                partial[k][lane] = sums[k];
            }
        });
        team.barrier();
        for (int half = columnLanes / 2; half > 0; half /= 2) {
            team.lanes(half, [&](int lane) {
                for (int k = 0; k < count; ++k)
                    partial[k][lane] = partial[k][lane] + partial[k][lane + half];
            });
            team.barrier();
        }
        Values values;
        for (int k = 0; k < count; ++k) values.of[k] = partial[k][0];
        team.barrier();  // the next sums' lanes write there again
        return values;
    }

    // result := the columns, n elements of each, times x; or this is added to it.
    LUMO_DEVICE void multiply(Team team, int n, const Values& x, bool added, T* result) const {
        team.lanes(columnLanes, [&](int lane) {
            long i = lane * pack;
            combinePacks<bytes>(i, n, x, added, result);
            LUMO_ROLLED
            for (; i < n; i += columnLanes) {
                T sum = at[0][i] * x.of[0];
                for (int k = 1; k < count; ++k) sum = sum + at[k][i] * x.of[k];
                result[i] = added ? result[i] + sum : sum;
            }
        });
    }

  private:
    template <int size>
    struct Products {
        cudalib::DotProduct<T, size> of[count];
    };

    // From i on, in packs; what is left is taken in halves of a pack and so on, with the halves of
    // the products so far. Returns where not even those fit.
    template <int size>
    LUMO_DEVICE long addPacks(long i, int n, const T* x, Products<size>& products,
                              T (&sums)[count]) const {
        constexpr int length = cudalib::packed<T, size>, step = columnLanes * length;
        LUMO_ROLLED
        for (; i + (unrolled - 1) * step + length <= n; i += unrolled * step)
            for (int turn = 0; turn < unrolled; ++turn)
                for (int k = 0; k < count; ++k)
                    products.of[k].add(at[k] + i + turn * step, x + i + turn * step);
        if constexpr (length > 1 && size > cudalib::smallestPack) {
            Products<size / 2> halves;
            for (int k = 0; k < count; ++k)
                halves.of[k] = cudalib::DotProduct<T, size / 2>(products.of[k]);
            return addPacks(i, n, x, halves, sums);
        } else {
            for (int k = 0; k < count; ++k) sums[k] = products.of[k].total();
            return i;
        }
    }
    template <int size>
    LUMO_DEVICE void combinePacks(long& i, int n, const Values& x, bool added, T* result) const {
        constexpr int length = cudalib::packed<T, size>;
        LUMO_ROLLED
        for (; i + length <= n; i += columnLanes * length) {
            cudalib::Combination<T, size> sum;
            for (int k = 0; k < count; ++k) {
                sum.add(at[k] + i, x.of[k]);
                if constexpr (size == bytes) cudalib::prefetch<false>(at[k] + i, next);
            }
            if (added)
                sum.addTo(result + i);
            else
                sum.store(result + i);
        }
        if constexpr (length > 1 && size > cudalib::smallestPack)
            combinePacks<size / 2>(i, n, x, added, result);
    }
};

// y := W t and r := W c for rows of W. The lanes are dealt `span` rows at a time and, if there are
// more of them, slices of the columns.
template <class T>
struct RowProducts {
    using Team = cudalib::Team<lumo::bothProductsLanes, 1>;
    static constexpr int span = columnLanes < Team::X ? Team::X : lumo::columnsTogether<T>;
    static constexpr int slices = Team::X / span, together = 4;

    const T* w;  // at the first of the rows
    int ldw, rows, count;
    const T *t, *c;

    LUMO_DEVICE void make(Team team, T* y, T* r) const {
        LUMO_SHARED T byT[Team::X], byC[Team::X];
        const int lanes = slices == 1 ? rows : Team::X;
        team.lanes(lanes, [&](int lane) { byT[lane] = byC[lane] = T(0); });
        int k = 0;
        for (; k + slices * together <= count; k += slices * together)
            team.lanes(lanes, [&](int lane) {
                add<together>(lane % span, k + lane / span * together, byT[lane], byC[lane]);
            });
        for (; k < count; k += slices)
            team.lanes(lanes, [&](int lane) {
                if (slices == 1 || k + lane / span < count)
                    add<1>(lane % span, k + lane / span, byT[lane], byC[lane]);
            });
        team.barrier();
        for (int half = Team::X / 2; half >= span; half /= 2) {
            team.lanes(half, [&](int lane) {
                byT[lane] = byT[lane] + byT[lane + half];
                byC[lane] = byC[lane] + byC[lane + half];
            });
            team.barrier();
        }
        team.lanes(rows, [&](int lane) {
            y[lane] = byT[lane];
            r[lane] = byC[lane];
        });
        team.barrier();
    }

    template <int columns>
    LUMO_DEVICE void add(int row, int k, T& byT, T& byC) const {
        if (slices > 1 && row >= rows) return;
        T first = byT, second = byC;
        for (int i = 0; i < columns; ++i) {
            const T element = w[std::size_t(k + i) * std::size_t(ldw) + row];
            first = first + element * t[k + i];
            second = second + element * c[k + i];
        }
        byT = first;
        byC = second;
    }
};

template <class T, int bytes>
LUMO_KERNEL void BothProducts_k(int rows, int lead, int columns, int count, int perPart, const T* a,
                                int lda, T* w, int ldw, const T* v, const T* t, const T* c,
                                const T* tau, T* r, T* parts, int ldparts) {
    using Group = Columns<T, bytes>;
    cudalib::kernel<256>([&](typename Group::Team team) LUMO_INLINED {
        const long begin = team.x() * perPart;
        const long end = columns - begin < perPart ? columns : begin + perPart;
        T *const part = parts + team.x() * ldparts, *const y = w + count * long(ldw);
        const T factor = *tau;
        constexpr int span = RowProducts<T>::span;
        for (long j = begin; j < end; j += span) {
            const int here = end - j < span ? int(end - j) : span;
            RowProducts<T>{w + j, ldw, here, count, t, c}.make(team, y + j, r + j);
        }

        for (long j = begin; j < end; j += Group::count) {
            // The last group may have columns to spare: they are the last one once more, times 0.
            const int here = end - j < Group::count ? int(end - j) : Group::count;
            Group group;
            group.next = Group::count * std::size_t(lda);
            for (int k = 0; k < Group::count; ++k)
                group.at[k] = a + (j + (k < here ? k : here - 1)) * lda;
            typename Group::Values left = group.dotProducts(team, rows, v), row;
            for (int k = 0; k < Group::count; ++k) {
                const long column = j + (k < here ? k : here - 1);
                left.of[k] = factor * (left.of[k] + y[column]);
                row.of[k] =
                    k < here ? lumo::conjugate(group.at[k][lead]) + r[column] - left.of[k] : T(0);
            }
            team.barrier();  // the lanes have read y and r
            team.lanes(1, [&](int) {
                for (int k = 0; k < Group::count; ++k)
                    if (k < here) {
                        y[j + k] = left.of[k];
                        r[j + k] = row.of[k];
                    }
            });
            group.multiply(team, rows, row, j > begin, part);
        }
    });
}

// A is read once for two products; a block goes from group to group of columns, with barriers.
template <class T>
struct BothProductsCost {
    static cudalib::Work of(int rows, int, int columns, int count, int perPart, const T*, int, T*,
                            int, const T*, const T*, const T*, const T*, T*, T*, int) {
        const double size = double(rows) * columns;
        return {(size + double(columns) * (count + 2)) * sizeof(T),
                2 * cudalib::flopsOfProduct<T> * size, 2. * perPart / lumo::columnsTogether<T>};
    }
};

LUMO_REGISTER(lumo::ElementTypes,
              cudalib::Kernel<&BothProducts_k<T, cudalib::usualPack>, BothProductsCost<T>,
                              &BothProducts_k<T, cudalib::widePack>>)
