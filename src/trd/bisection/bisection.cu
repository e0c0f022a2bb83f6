#include "trd/bisection/bisection.h"

#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"
#include "trd/bisection/numbers.h"
#include "trd/bisection/shape.h"

using lumo::Numbers;

using BisectionTeam = cudalib::Team<lumo::bisectionLanes, 1>;
template <class V>
using OfLanes = cudalib::LaneValues<BisectionTeam, V>;

// What a lane knows of T - x: the last row's pivot of its elimination, which needs no row
// exchanges, and how many pivots were negative. So many eigenvalues of T are below x, or at x.
template <class R>
struct SturmCount {
    OfLanes<R> x, pivot;
    OfLanes<int> negative;

    LUMO_DEVICE void walk(BisectionTeam team, int n, const R* d, const R* squares) {
        team.lanes(team.X, [&](int lane) {
            pivot.at(0, lane) = 1;
            negative.at(0, lane) = 0;
        });
        int i = 0;
        for (; i + together <= n; i += together) rows<together>(team, d + i, squares + i);
        for (; i < n; ++i) rows<1>(team, d + i, squares + i);
    }

  private:
    static constexpr int together = 4;  // rows that are read before their quotients are waited for

    // A pivot that a denormal number's change would make zero is taken for a negative one, so that
    // its quotient is finite. What is subtracted in this order is monotone, as the quotient is, and
    // so is the count.
    template <int count>
    LUMO_DEVICE void rows(BisectionTeam team, const R* d, const R* squares) {
        constexpr R least = Numbers<R>::leastNormal;
        R diagonal[count], square[count];
        for (int k = 0; k < count; ++k) {
            diagonal[k] = d[k];
            square[k] = squares[k];
        }
        team.lanes(team.X, [&](int lane) {
            R q = pivot.at(0, lane);
            int below = 0;
            for (int k = 0; k < count; ++k) {
                q = (diagonal[k] - x.at(0, lane)) - square[k] / q;
                q = lumo::magnitude(q) < least ? -least : q;
                below += q < 0;
            }
            pivot.at(0, lane) = q;
            negative.at(0, lane) += below;
        });
    }
};

// Some lanes have a value, and each a candidate for it: of the parts that these cut a range of
// numbers into, the next one is the first whose upper end has the value below it. Since an element
// is at most 1, -4 and 4 are ends to begin with.
template <class R>
LUMO_KERNEL void Bisection_k(int n, const R* d, const R* squares, int first, int count,
                             int candidates, R* values) {
    cudalib::kernel<65536>([&](BisectionTeam team) LUMO_INLINED {
        using Place = typename Numbers<R>::Place;
        const int begin = int(team.x()) * (team.X / candidates);
        OfLanes<Place> low;
        SturmCount<R> sturm;
        LUMO_SHARED int below[lumo::bisectionLanes];
        team.lanes(team.X, [&](int lane) { low.at(0, lane) = -Numbers<R>::ofFour; });
        auto distance = Numbers<R>::range;
        while (distance > 1) {
            distance = Numbers<R>::part(distance, candidates);
            const Place step = Place(distance);
            team.lanes(team.X, [&](int lane) {
                sturm.x.at(0, lane) =
                    Numbers<R>::at(low.at(0, lane) + step * Place(lane % candidates + 1));
            });
            sturm.walk(team, n, d, squares);
            team.lanes(team.X, [&](int lane) { below[lane] = sturm.negative.at(0, lane); });
            team.barrier();
            team.lanes(team.X, [&](int lane) {
                const int group = lane / candidates, index = first + begin + group;
                const int* const counts = below + group * candidates;
                int k = 0;
                while (k < candidates && counts[k] <= index) ++k;
                low.at(0, lane) += step * Place(k);
            });
            team.barrier();
        }
        team.lanes(team.X, [&](int lane) {
            const int k = begin + lane / candidates;
            if (lane % candidates == 0 && k < count)
                values[k] = Numbers<R>::at(low.at(0, lane) + 1);
        });
    });
}

// A row's subtractions, comparison and count, and its quotient, are the work of some products. The
// quotient waits for the one before, about so many reads of memory; the matrix itself is at hand
// after the first round. A host that compares values gets some that are not small.
template <class R>
struct BisectionCost {
    static cudalib::Work of(int n, const R*, const R* squares, int, int count, int candidates,
                            R* values) {
        constexpr double productsOfRow = 16, turnsOfRow = sizeof(R) == 4 ? 0.15 : 0.5;
        int rounds = 0;
        for (auto distance = Numbers<R>::range; distance > 1; ++rounds)
            distance = Numbers<R>::part(distance, candidates);
        const double rows = double(n) * rounds;
        cudalib::Work w{(2. * n + count) * sizeof(R),
                        rows * count * candidates * productsOfRow * cudalib::flopsOfProduct<R>,
                        rows * turnsOfRow};
        w.norm = values;
        w.normFrom = squares + n - count;
        w.size = unsigned(count) * unsigned(sizeof(R));
        return w;
    }
};

LUMO_REGISTER(lumo::RealTypes, cudalib::Kernel<&Bisection_k<T>, BisectionCost<T>>)
