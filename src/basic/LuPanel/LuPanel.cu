#include <climits>
#include <cmath>
#include <limits>

#include "basic/LuPanel/shape.h"
#include "basic/magnitude.h"
#include "cudalib/grid.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"
#include "platform/reciprocal.h"

using lumo::luPanelColumns;
using lumo::PivotOffer;
using lumo::RealOf;

using PanelGrid = cudalib::Grid<lumo::luPanelLanes>;

namespace lumo {

template <class R>
constexpr R infinite = std::numeric_limits<R>::infinity();

// How LAPACK's IxAMAX judges element x of a column from row j on: the first of the largest. Not a
// number is larger than none, but nothing is larger than it where it comes first.
template <class T>
LUMO_DEVICE PivotChoice<RealOf<T>> pivotChoice(T x, int row, int j) {
    using R = RealOf<T>;
    const R size = magnitude(realPart(x)) + magnitude(imaginaryPart(x));
    if (size == size) return {size, row, 0};
    return {row == j ? infinite<R> : R(-1), row, 0};
}

// Of the sizes that are equal the first row's.
template <class R>
LUMO_DEVICE PivotChoice<R> betterPivot(PivotChoice<R> a, PivotChoice<R> b) {
    return a.size > b.size || (a.size == b.size && a.row < b.row) ? a : b;
}

// What xGETF2 makes multipliers with: it leaves them as they are where the pivot is zero, and
// multiplies with its reciprocal unless that overflows.
template <class T>
class Divisor {
  public:
    LUMO_DEVICE explicit Divisor(T pivot)
        : pivot_(pivot),
          byReciprocal_(!platform::reciprocalOverflows(realPart(pivot), imaginaryPart(pivot))),
          reciprocal_(pivot == T(0) ? T(1) : T(1) / pivot) {}
    LUMO_DEVICE T operator()(T x) const { return byReciprocal_ ? x * reciprocal_ : x / pivot_; }

  private:
    T pivot_;
    bool byReciprocal_;
    T reciprocal_;
};

}  // namespace lumo

// A lane keeps its row and the number that the row has come to have; nothing moves until the end,
// when the lane writes it to where it belongs. After each column a row's elements change places by
// one, so that the next column's is the first and registers have numbers that the compiler knows:
// what is done with follows behind what is left.
template <class T>
LUMO_KERNEL void LuPanel_k(int m, int n, T* a, int lda, int first, PivotOffer<T>* offers,
                           unsigned* meeting, int* ipiv, lumo::RowMoves* moves, int* info) {
    cudalib::kernel<luPanelColumns>([&](PanelGrid grid) LUMO_INLINED {
        using Choice = lumo::PivotChoice<RealOf<T>>;
        constexpr int columns = luPanelColumns;
        const Choice none{RealOf<T>(-1), INT_MAX, 0};
        const auto better = [](Choice x, Choice y) { return lumo::betterPivot(x, y); };
        LUMO_SHARED T pivotRow[columns];
        PanelGrid::Kept<T, columns> row(m);
        PanelGrid::Kept<int, 1> number(m);
        int firstZero = INT_MAX;

        grid.each(m, [&](int i) {
            number(i, 0) = i;
            LUMO_UNROLLED for (int k = 0; k < columns; ++k) {
                row(i, k) = k < n ? cudalib::at(a, lda, i, k) : T(0);
            }
        });
        for (int j = 0; j < n; ++j) {
            Choice mine = grid.bestOfEach(
                m, none,
                [&](int i) {
                    return number(i, 0) < j ? none : lumo::pivotChoice(row(i, 0), number(i, 0), j);
                },
                better);
            mine.block = grid.block();
            PivotOffer<T>* const set = offers + j % 2 * grid.blocks();
            PivotOffer<T>& offer = set[grid.block()];
            grid.lanes(1, [&](int) { offer.choice = mine; });
            grid.each(m, [&](int i) {
                if (number(i, 0) != mine.row) return;
                LUMO_UNROLLED for (int k = 0; k < columns; ++k) offer.row[k] = row(i, k);
            });
            grid.barrierOfGrid(meeting);

            const Choice pivot = grid.bestOfAll(
                grid.blocks(), none, [&](int b) { return set[b].choice; }, better);
            grid.lanes(columns, [&](int k) { pivotRow[k] = set[pivot.block].row[k]; });
            grid.barrier();
            const T diagonal = pivotRow[0];
            const lumo::Divisor<T> divided(diagonal);
            if (diagonal == T(0) && firstZero == INT_MAX) firstZero = first + j + 1;
            if (grid.block() == 0) grid.lanes(1, [&](int) { ipiv[j] = first + pivot.row + 1; });
            grid.each(m, [&](int i) {
                int& its = number(i, 0);
                its = its == pivot.row ? j : its == j ? pivot.row : its;
                const bool below = its > j;
                const T last = below ? divided(row(i, 0)) : row(i, 0);
                LUMO_UNROLLED for (int k = 1; k < columns; ++k) {
                    const T x = row(i, k);
                    row(i, k - 1) = below && k < columns - j ? x - last * pivotRow[k] : x;
                }
                row(i, columns - 1) = last;
            });
        }

        grid.each(m, [&](int i) {
            const int its = number(i, 0);
            LUMO_UNROLLED for (int k = 0; k < columns; ++k) {
                const int column = (k + n) % columns;
                if (column < n) cudalib::at(a, lda, its, column) = row(i, k);
            }
            // Who comes to the first n rows, and where those go that were there.
            if (its < n) {
                moves->from[its] = unsigned(i);
                moves->to[its] = unsigned(its);
            }
            if (i < n) {
                moves->from[n + i] = unsigned(i);
                moves->to[n + i] = unsigned(its < n ? i : its);
            }
        });
        if (grid.block() == 0)
            grid.lanes(1, [&](int) {
                moves->count = 2 * n;
                if (first == 0 || *info == INT_MAX) *info = firstZero;
            });
    });
}

// A block takes a few columns: its lanes move their rows, of which the table has those first that
// come to the first n, and then solve for these.
template <class T>
LUMO_KERNEL void LuBeside_k(int left, int right, T* b, int n, T* a, int lda,
                            const lumo::RowMoves* moves) {
    using Movers = cudalib::Team<lumo::movedAtOnce, 1>;
    cudalib::kernel<lumo::movedAtOnce>([&](Movers team) LUMO_INLINED {
        constexpr int rows = luPanelColumns, most = lumo::columnsOfBlock;
        static_assert(rows * most == Movers::X);
        LUMO_SHARED T triangle[rows][rows], top[most][rows];
        cudalib::LaneValues<Movers, T> kept[most];
        const int first = int(team.x()) * most;
        const auto column = [&](int c) {
            const long number = first + c - left;
            return (number < 0 ? a : b) + number * lda;
        };
        for (int c = 0; c < most; ++c)
            if (first + c < left + right)
                team.lanes(moves->count,
                           [&](int x) { kept[c].at(0, x) = column(c)[moves->from[x]]; });
        for (int k = 0; k < n; ++k)
            team.lanes(rows,
                       [&](int r) { triangle[k][r] = r < n ? cudalib::at(a, lda, r, k) : T(0); });
        team.barrier();
        for (int c = 0; c < most; ++c)
            if (first + c < left + right)
                team.lanes(moves->count, [&](int x) {
                    const unsigned to = moves->to[x];
                    if (x < n)
                        top[c][x] = kept[c].at(0, x);
                    else if (to != moves->from[x])
                        column(c)[to] = kept[c].at(0, x);
                });
        for (int k = 0; k < n; ++k) {
            team.barrier();
            team.lanes(Movers::X, [&](int x) {
                const int c = x / rows, r = x % rows;
                const bool solves = first + c >= left && first + c < left + right;
                // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): all are set
                if (solves && r > k && r < n) top[c][r] = top[c][r] - triangle[k][r] * top[c][k];
            });
        }
        team.lanes(Movers::X, [&](int x) {
            const int c = x / rows, r = x % rows;
            if (r < n && first + c < left + right) column(c)[r] = top[c][r];
        });
    });
}

// A column waits for the block's own choice, for those of the blocks, of which a lane reads one in
// 32, for the row that is chosen, and for all to meet; the rows are read and written once.
template <class T>
struct LuPanelCost {
    static cudalib::Work of(int m, int n, T*, int, int first, PivotOffer<T>*, unsigned*, int* ipiv,
                            lumo::RowMoves*, int*) {
        const double blocks = std::ceil(double(m) / lumo::luPanelLanes);
        cudalib::Work w{2. * m * n * sizeof(T)};
        w.flops = double(m) * n * n * cudalib::flopsOfProduct<T> / 2;
        w.turns = n * (2 + std::ceil(blocks / 32)) + 4;
        w.meetings = n;
        w.pivots = ipiv;
        w.first = first;
        w.rows = m;
        w.columns = n;
        return w;
    }
};

// The table, the rows that it names, the triangle's, and steps in shared memory, of which several
// take as long as a read.
template <class T>
struct LuBesideCost {
    static cudalib::Work of(int left, int right, T*, int n, T*, int lda, const lumo::RowMoves*) {
        const double columns = double(left) + right;
        cudalib::Work w{columns * 2 * n * (sizeof(T) + cudalib::bytesOfLoneElement<T>)};
        w.turns = 4 + n / 5.;
        w.reach = columns * lda * sizeof(T);
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&LuPanel_k<T>, LuPanelCost<T>>,
              cudalib::Kernel<&LuBeside_k<T>, LuBesideCost<T>>)
