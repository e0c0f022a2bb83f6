#include <limits>

#include "basic/larfg/shape.h"
#include "basic/magnitude.h"
#include "cudalib/kernel.h"
#include "cudalib/lane_values.h"

using lumo::imaginaryPart;
using lumo::RealOf;
using lumo::realPart;

using ReflectorTeam = cudalib::Team<lumo::reflectorLanes, 1>;

// The sum of |factor x(i)|^2.
template <class T>
LUMO_DEVICE RealOf<T> sumOfSquares(int n, const T* x, std::size_t incx, RealOf<T> factor) {
    using R = RealOf<T>;
    constexpr int width = ReflectorTeam::X;
    cudalib::LaneValues<ReflectorTeam, R> sum;
    ReflectorTeam::lanes(width, [&](int lane) { sum.at(0, lane) = R(0); });
    for (long i = 0; i < n; i += width)
        ReflectorTeam::lanes(n - i, [&](int lane) {
            R& mine = sum.at(0, lane);
            mine = mine + lumo::square(factor * x[std::size_t(i + lane) * incx]);
        });
    return cudalib::sumOfLanes(sum);
}

// Squares that overflow or underflow are summed once more in another unit, a power of two: the
// second unit takes in all numbers that are too small for the first, or too large. A beta below the
// safe minimum is computed in the small unit, so that tau and v keep their accuracy; LAPACK scales
// in a loop, but one step takes in all denormal numbers of these formats.
template <class T>
struct HouseholderReflector {
    using R = RealOf<T>;
    using Limits = std::numeric_limits<R>;
    static constexpr R largest = Limits::max();
    static constexpr R tiny = Limits::min() / Limits::epsilon() * 2;  // LAPACK's safe minimum
    static constexpr R huge = 1 / tiny;
    static constexpr R leastSum = tiny / Limits::epsilon();  // lost squares do not change it

    LUMO_DEVICE static void make(ReflectorTeam team, int n, T* alphaAt, T* x, int incx, T* tau) {
        const std::size_t stride = std::size_t(incx);
        T alpha = *alphaAt;
        R sum = sumOfSquares(n - 1, x, stride, R(1));
        R unit = 1, perUnit = 1;  // sum is in units^2
        if (sum < leastSum || sum > largest) {
            const bool small = sum < leastSum;
            unit = small ? tiny : huge;
            perUnit = small ? huge : tiny;
            sum = sumOfSquares(n - 1, x, stride, perUnit);
        }
        if (sum == 0 && imaginaryPart(alpha) == 0) {
            team.lanes(1, [&](int) { *tau = T(0); });
            return;
        }
        const R norm = std::sqrt(sum);
        R beta = lumo::length(realPart(alpha), imaginaryPart(alpha), norm * unit);
        const bool scaled = beta < tiny;
        if (scaled) {
            alpha = huge * alpha;
            beta = lumo::length(realPart(alpha), imaginaryPart(alpha), norm);
        }
        beta = -std::copysign(beta, realPart(alpha));
        const T factor = T(1) / (alpha - T(beta));
        const R scale = scaled ? huge : R(1);
        for (long i = 0; i < n - 1; i += team.X)
            team.lanes(n - 1 - i, [&](int lane) {
                T& element = x[std::size_t(i + lane) * stride];
                element = (scale * element) * factor;
            });
        team.lanes(1, [&](int) {
            *tau = (T(beta) - alpha) / T(beta);
            *alphaAt = T(scaled ? beta * tiny : beta);
        });
    }
};

template <class Map, class T>
LUMO_KERNEL void LARFG_k(int n, T* alpha, T* x, int incx, T* tau) {
    cudalib::kernel<64>([&](ReflectorTeam team) LUMO_INLINED {
        HouseholderReflector<T>::make(team, n, alpha, x, incx, tau);
    });
}

LUMO_REGISTER(lumo::ElementTypes, &LARFG_k<lumo::ReflectorMap, T>)
