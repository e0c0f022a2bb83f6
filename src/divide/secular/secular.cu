#include <cmath>
#include <limits>

#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"
#include "divide/merge.h"
#include "divide/secular/roots.h"
#include "divide/secular/shape.h"

using lumo::Merge;

using VectorTeam = cudalib::Team<lumo::vectorLanes, 1>;

template <class R>
LUMO_KERNEL void SecularRoots_k(int /*count*/, const Merge<R>* merges, const R* d, const R* z,
                                R* origin, R* offset, R* root) {
    cudalib::kernel<4096>([&](lumo::SecularTeam team) LUMO_INLINED {
        const Merge<R> merge = merges[team.y()];
        const int first = int(team.x()) * team.X;
        if (first >= merge.kept) return;
        lumo::SecularEquation<R>(merge.kept, merge.rho, d + merge.first, z + merge.first)
            .solve(team, first, origin + merge.first, offset + merge.first, root + merge.first);
    });
}

// A lane has a row. The product over all roots of the ratios of the pole's distances, from the root
// and from the pole that the root belongs to.
template <class R>
LUMO_KERNEL void SecularWeights_k(int /*count*/, const Merge<R>* merges, const R* d, const R* z,
                                  const int* rows, const R* origin, const R* offset, R* pole,
                                  R* weight) {
    cudalib::kernel<1024>([&](lumo::SecularTeam team) LUMO_INLINED {
        const Merge<R> merge = merges[team.y()];
        const long first = team.x() * team.X, here = merge.kept - first;
        if (here <= 0) return;
        const R *const poles = d + merge.first, *const origins = origin + merge.first,
                       *const offsets = offset + merge.first;
        const int* const mine = rows + merge.first + first;
        cudalib::LaneValues<lumo::SecularTeam, R> at, product;
        cudalib::LaneValues<lumo::SecularTeam, int> index;
        team.lanes(here, [&](int lane) {
            index.at(0, lane) = mine[lane];
            at.at(0, lane) = poles[mine[lane]];
            product.at(0, lane) = 1;
        });
        for (int j = 0; j < merge.kept; ++j) {
            const R from = origins[j], beyond = offsets[j], other = poles[j];
            team.lanes(here, [&](int lane) {
                const R distance = (at.at(0, lane) - from) - beyond;
                const R poleDistance = at.at(0, lane) - other;
                product.at(0, lane) = product.at(0, lane) *
                                      (distance / (index.at(0, lane) == j ? R(1) : poleDistance));
            });
        }
        team.lanes(here, [&](int lane) {
            const R length = std::sqrt(lumo::magnitude(product.at(0, lane)));
            const std::size_t row = std::size_t(merge.first + first + lane);
            pole[row] = at.at(0, lane);
            weight[row] = z[merge.first + mine[lane]] < 0 ? -length : length;
        });
    });
}

template <class R>
LUMO_KERNEL void SecularVectors_k(int /*count*/, const Merge<R>* merges, const R* origin,
                                  const R* offset, const R* pole, const R* weight, R* s, int lds) {
    cudalib::kernel<16>([&](VectorTeam team) LUMO_INLINED {
        const Merge<R> merge = merges[team.y()];
        const int j = int(team.x()), n = merge.kept;
        if (j >= n) return;
        const R from = origin[merge.first + j], beyond = offset[merge.first + j];
        const R *const poles = pole + merge.first, *const weights = weight + merge.first;
        R* const column = &cudalib::at(s, lds, merge.first, merge.first + j);
        cudalib::LaneValues<VectorTeam, R> squares;
        team.lanes(team.X, [&](int lane) { squares.at(0, lane) = 0; });
        for (long i = 0; i < n; i += team.X)
            team.lanes(n - i, [&](int lane) {
                const R x = weights[i + lane] / ((poles[i + lane] - from) - beyond);
                squares.at(0, lane) = squares.at(0, lane) + x * x;
                column[i + lane] = x;
            });
        const R scale = 1 / std::sqrt(cudalib::sumOfLanes(squares));
        for (long i = 0; i < n; i += team.X)
            team.lanes(n - i, [&](int lane) { column[i + lane] = column[i + lane] * scale; });
    });
}

// A quotient is as much work as some products.
template <class R>
constexpr double flopsOfTerm = 6 * cudalib::flopsOfProduct<R>;

// Each root, or pole, has a term of each pole, or root.
template <class R>
double termsOf(int count, const Merge<R>* merges) {
    return lumo::sumOverMerges(count, merges,
                               [](const Merge<R>& m) { return double(m.kept) * m.kept; });
}

// A root lies above its pole, and close to it beside the others: a host that asks where gets that.
template <class R>
struct SecularRootsCost {
    static cudalib::Work of(int count, const Merge<R>* merges, const R* d, const R*, R*, R*,
                            R* root) {
        constexpr int usualSteps = 7;
        const double terms = usualSteps * termsOf(count, merges);
        cudalib::Work w{terms / lumo::secularLanes * sizeof(R), terms * flopsOfTerm<R>};
        if (count == 0) return w;
        const Merge<R>&first = merges[0], &last = merges[count - 1];
        w.norm = root + first.first;
        w.normFrom = d + first.first;
        w.size = unsigned(last.first + last.order - first.first) * unsigned(sizeof(R));
        return w;
    }
};
template <class R>
struct SecularWeightsCost {
    template <class... Rest>
    static cudalib::Work of(int count, const Merge<R>* merges, Rest...) {
        const double terms = termsOf(count, merges);
        return {terms / lumo::secularLanes * sizeof(R), terms * flopsOfTerm<R>};
    }
};
template <class R>
struct SecularVectorsCost {
    template <class... Rest>
    static cudalib::Work of(int count, const Merge<R>* merges, Rest...) {
        const double terms = termsOf(count, merges);
        return {2 * terms * sizeof(R), terms * flopsOfTerm<R>};
    }
};

LUMO_REGISTER(lumo::RealTypes, cudalib::Kernel<&SecularRoots_k<T>, SecularRootsCost<T>>,
              cudalib::Kernel<&SecularWeights_k<T>, SecularWeightsCost<T>>,
              cudalib::Kernel<&SecularVectors_k<T>, SecularVectorsCost<T>>)
