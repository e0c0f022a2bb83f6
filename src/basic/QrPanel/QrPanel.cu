#include <cmath>

#include "basic/QrPanel/shape.h"
#include "basic/larfg/reflector.h"
#include "cudalib/grid.h"
#include "cudalib/kernel.h"

using lumo::conjugate;
using lumo::qrPanelColumns;
using lumo::RealOf;
using lumo::ReflectorOffer;

using PanelGrid = cudalib::Grid<lumo::qrPanelLanes>;

// A lane keeps its row, whose elements change places by one after each column: the next column's is
// the first, registers have numbers that the compiler knows, and what is done with follows behind
// what is left. A column's products with all the others are the length of what is below the
// diagonal, what the reflector subtracts from the columns that are left, and the triangular
// factor's next column by those that are done: blocks meet once a column. All of them make the
// factor, by which each multiplies its rows of V in the end.
template <class T>
LUMO_KERNEL void QrPanel_k(int m, int n, T* a, int lda, ReflectorOffer<T>* offers,
                           unsigned* meeting, T* tau, int above, T* v, T* w, int ld) {
    cudalib::kernel<qrPanelColumns<T>>([&](PanelGrid grid) LUMO_INLINED {
        using R = RealOf<T>;
        using Reflector = lumo::HouseholderReflector<T>;
        constexpr int columns = qrPanelColumns<T>, groups = lumo::qrPanelLanes / columns;
        LUMO_SHARED T parts[groups][columns];  // of the blocks' sums, a lane each
        LUMO_SHARED T sums[columns], head[columns], products[columns], change[columns];
        LUMO_SHARED T factor[columns][columns];  // T by columns
        PanelGrid::Kept<T, columns> row(m);
        int meetings = 0;

        grid.each(m, [&](int i) {
            LUMO_UNROLLED for (int k = 0; k < columns; ++k) {
                row(i, k) = k < n ? cudalib::at(a, lda, i, k) : T(0);
            }
        });
        grid.lanes(columns * columns, [&](int x) { factor[x / columns][x % columns] = T(0); });
        for (int j = 0; j < n; ++j) {
            // The products of weight(x), x the first column below row j, with all columns: of the
            // first one's own weights the sum of squares.
            const auto multiply = [&](auto weight) {
                grid.sumsOfEach(
                    m,
                    [&](int i, int k) {
                        if (i <= j) return T(0);
                        const T x = weight(row(i, 0));
                        return conjugate(x) * (k == 0 ? x : row(i, k));
                    },
                    sums);
                ReflectorOffer<T>* const set = offers + meetings++ % 2 * grid.blocks();
                ReflectorOffer<T>& offer = set[grid.block()];
                grid.lanes(columns, [&](int k) { offer.sums[k] = sums[k]; });
                grid.each(m, [&](int i) {
                    if (i != j) return;
                    LUMO_UNROLLED for (int k = 0; k < columns; ++k) offer.head[k] = row(i, k);
                });
                grid.barrierOfGrid(meeting);
                grid.lanes(groups * columns, [&](int x) {
                    const int group = x / columns, k = x % columns;
                    T sum = T(0);
                    for (int b = group; b < grid.blocks(); b += groups) sum = sum + set[b].sums[k];
                    parts[group][k] = sum;
                });
                grid.barrier();
                grid.lanes(columns, [&](int k) {
                    T sum = parts[0][k];
                    for (int group = 1; group < groups; ++group) sum = sum + parts[group][k];
                    sums[k] = sum;
                    head[k] = set[0].head[k];
                });
                grid.barrier();
                return lumo::realPart(sums[0]);
            };
            const R sum = multiply([](T x) { return x; });
            // Products with x itself may overflow or vanish where those with the reflector do not.
            int again = grid.bestOfAll(
                columns, 0,
                [&](int k) {
                    const bool matters = k > 0 && (k < n - j || k >= columns - j);
                    return int(matters && !Reflector::isSafe(sums[k]));
                },
                [](int a, int b) { return a > b ? a : b; });
            const Reflector h = Reflector::of(head[0], sum, [&](R perUnit) {
                again = 1;
                return multiply([&](T x) { return perUnit * x; });
            });
            if (again) multiply([&](T x) { return h.vector(x); });
            grid.lanes(columns, [&](int k) {
                products[k] = head[k] + (again ? sums[k] : h.product(sums[k]));
                change[k] = conjugate(h.tau) * products[k];
            });
            grid.barrier();
            grid.lanes(j + 1, [&](int r) {
                T x = T(0);
                for (int l = r; l < j; ++l)
                    x = x - factor[l][r] * conjugate(products[columns - j + l]);
                factor[j][r] = r == j ? h.tau : h.tau * x;
            });
            const bool identity = h.isIdentity();
            grid.each(m, [&](int i) {
                const T x = row(i, 0), v = i > j ? h.vector(x) : T(1);
                const bool turns = i >= j && !identity;
                LUMO_UNROLLED for (int k = 1; k < columns; ++k) {
                    const T y = row(i, k);
                    row(i, k - 1) = turns && k < columns - j ? y - v * change[k] : y;
                }
                row(i, columns - 1) = i > j ? v : i == j ? T(h.beta) : x;
            });
        }

        grid.each(m, [&](int i) {
            LUMO_UNROLLED for (int k = 0; k < columns; ++k) {
                const int column = (k + n) % columns;
                if (column >= n) continue;
                T& x = row(i, k);
                cudalib::at(a, lda, i, column) = x;
                if (i <= column) x = T(i == column);
                cudalib::at(v, ld, above + i, column) = x;
            }
        });
        grid.barrier();
        for (int c = 0; c < n; ++c)
            grid.each(m, [&](int i) {
                T x = T(0);
                LUMO_UNROLLED for (int k = 0; k < columns; ++k) {
                    x = x + row(i, k) * factor[c][(k + n) % columns];
                }
                cudalib::at(w, ld, above + i, c) = x;
            });
        if (grid.block() == 0) {
            grid.lanes(n, [&](int c) { tau[c] = factor[c][c]; });
            for (int c = 0; c < n; ++c)
                grid.lanes(above, [&](int i) {
                    cudalib::at(v, ld, i, c) = cudalib::at(w, ld, i, c) = T(0);
                });
        }
    });
}

// A column waits for the block's own sums, for the blocks', of which a lane reads one in `groups`,
// four at a time, for their sum, for the reflector, and for all to meet; the rows are read once,
// and written thrice.
template <class T>
struct QrPanelCost {
    template <class... Rest>
    static cudalib::Work of(int m, int n, Rest...) {
        constexpr double groups = double(lumo::qrPanelLanes) / qrPanelColumns<T>;
        const double blocks = std::ceil(double(m) / lumo::qrPanelLanes);
        cudalib::Work w{4. * m * n * sizeof(T)};
        w.flops = 3. * m * n * qrPanelColumns<T> * cudalib::flopsOfProduct<T>;
        w.turns = n * (4 + std::ceil(blocks / groups / 4)) + 12;
        w.meetings = n;
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&QrPanel_k<T>, QrPanelCost<T>>)
