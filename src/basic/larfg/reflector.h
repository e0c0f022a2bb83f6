// A Householder reflector, as a team of lanes finds it.
#pragma once

#include <limits>

#include "basic/magnitude.h"
#include "cudalib/lane_values.h"

namespace lumo {

// The sum of |factor x(i)|^2.
template <class Team, class T>
LUMO_DEVICE RealOf<T> sumOfSquares(Team team, int n, const T* x, std::size_t incx,
                                   RealOf<T> factor) {
    using R = RealOf<T>;
    cudalib::LaneValues<Team, R> sum;
    team.lanes(Team::X, [&](int lane) { sum.at(0, lane) = R(0); });
    for (long i = 0; i < n; i += Team::X)
        team.lanes(n - i, [&](int lane) {
            R& mine = sum.at(0, lane);
            mine = mine + square(factor * x[std::size_t(i + lane) * incx]);
        });
    return cudalib::sumOfLanes(sum);
}

// H = I - tau (1, v) (1, v)^H with H^H (alpha, x) = (beta, 0) and beta real (LAPACK xLARFG).
//
// Squares that overflow or underflow are summed once more in another unit, a power of two: the
// second unit takes in all numbers that are too small for the first, or too large. A beta below the
// safe minimum is computed in the small unit, so that tau and v keep their accuracy; LAPACK scales
// in a loop, but one step takes in all denormal numbers of these formats.
template <class T>
struct HouseholderReflector {
    using R = RealOf<T>;

    R beta;
    T tau;

    // Of n - 1 elements x. Nothing is written; all lanes have read alpha and x when this returns.
    template <class Team>
    LUMO_DEVICE static HouseholderReflector make(Team team, int n, T alpha, const T* x,
                                                 std::size_t incx) {
        return of(alpha, sumOfSquares(team, n - 1, x, incx, R(1)),
                  [&](R perUnit) { return sumOfSquares(team, n - 1, x, incx, perUnit); });
    }

    // By the sum of |x|^2, and a way to sum |perUnit x|^2 instead where that is too small or large.
    template <class F>
    LUMO_DEVICE static HouseholderReflector of(T alpha, R sum, F sumInUnits) {
        R unit = 1;  // sum is in units^2
        if (sum < leastSum || sum > largest) {
            const bool small = sum < leastSum;
            unit = small ? tiny : huge;
            sum = sumInUnits(small ? huge : tiny);
        }
        HouseholderReflector h;
        h.factor_ = T(1);
        h.scale_ = R(1);
        if (sum == 0 && imaginaryPart(alpha) == 0) {
            h.beta = realPart(alpha);
            h.tau = T(0);
            return h;
        }
        const R norm = std::sqrt(sum);
        R beta = length(realPart(alpha), imaginaryPart(alpha), norm * unit);
        const bool scaled = beta < tiny;
        if (scaled) {
            alpha = huge * alpha;
            beta = length(realPart(alpha), imaginaryPart(alpha), norm);
            h.scale_ = huge;
        }
        beta = -std::copysign(beta, realPart(alpha));
        h.factor_ = T(1) / (alpha - T(beta));
        h.tau = (T(beta) - alpha) / T(beta);
        h.beta = scaled ? beta * tiny : beta;
        return h;
    }

    // x is zero and alpha, which is beta, is real.
    LUMO_DEVICE bool isIdentity() const { return tau == T(0); }
    // The element of v that was this one of x.
    LUMO_DEVICE T vector(T element) const { return (scale_ * element) * factor_; }
    // v^H y from x^H y, where |x|^2 needed no unit of its own.
    LUMO_DEVICE T product(T sum) const { return conjugate(factor_) * sum; }
    // Whether x^H y lost nothing that v^H y would not have lost.
    LUMO_DEVICE static bool isSafe(T sum) {
        const R size = magnitude(realPart(sum)) + magnitude(imaginaryPart(sum));
        return size >= leastSum && size <= largest;
    }

  private:
    using Limits = std::numeric_limits<R>;
    static constexpr R largest = Limits::max();
    static constexpr R tiny = Limits::min() / Limits::epsilon() * 2;  // LAPACK's safe minimum
    static constexpr R huge = 1 / tiny;
    static constexpr R leastSum = tiny / Limits::epsilon();  // lost squares do not change it

    T factor_;
    R scale_;
};

}  // namespace lumo
