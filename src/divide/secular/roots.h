// The roots of the secular equation, by a block for some of them.
#pragma once

#include <cmath>
#include <limits>

#include "basic/magnitude.h"
#include "cudalib/lane_values.h"
#include "divide/secular/measure.h"
#include "divide/secular/shape.h"

namespace lumo {

using SecularTeam = cudalib::Team<secularLanes, 1>;

// f(x) = 1 / rho + sum of z(i)^2 / (d(i) - x), which grows between its poles: root j lies above
// d(j) and below d(j + 1), the last one below d(n - 1) + rho. (Li, LAPACK working note 89, 1994.)
// For singular values all but rho and z are squares.
//
// A lane has a root: all go through the poles together. What they know of a root is a bracket and a
// point x in it, all as distances from the nearer pole, its origin, so that small ones keep their
// digits.
template <class R, class Of>
class SecularEquation {
  public:
    LUMO_DEVICE SecularEquation(int n_, R rho_, const R* d_, const R* z_)
        : n(n_), rho(rho_), d(d_), z(z_) {}

    // Roots first, first + 1, ... as far as the lanes go.
    LUMO_DEVICE void solve(SecularTeam team, int first, R* origin, R* offset, R* root) {
        here_ = n - first;
        first_ = first;
        if (n == 1)
            team.lanes(here_, [&](int lane) {
                from_.at(0, lane) = d[0];
                x_.at(0, lane) = Of::offset(d[0], rho * z[0] * z[0]);
            });
        else
            iterate(team);
        team.lanes(here_, [&](int lane) {
            origin[first + lane] = from_.at(0, lane);
            offset[first + lane] = x_.at(0, lane);
            root[first + lane] = from_.at(0, lane) + x_.at(0, lane);
        });
    }

  private:
    template <class V>
    using Values = cudalib::LaneValues<SecularTeam, V>;
    static constexpr R eps = std::numeric_limits<R>::epsilon() / 2;
    static constexpr int together = 4;  // poles
    // More steps than any bracket takes to be halved until nothing lies between its ends.
    static constexpr int mostSteps = 200, patience = 8;

    LUMO_DEVICE void iterate(SecularTeam team) {
        start(team);
        for (int step = 0; step < mostSteps; ++step) {
            evaluate(team);
            Values<int> active;
            team.lanes(team.X, [&](int lane) { active.at(0, lane) = 0; });
            const bool halve = step >= patience && step % 3 == 2;
            team.lanes(here_, [&](int lane) {
                if (!done_.at(0, lane)) done_.at(0, lane) = advance(lane, halve);
                active.at(0, lane) = !done_.at(0, lane);
            });
            if (cudalib::sumOfLanes(active) == 0) return;
        }
    }

    // The last root has no pole above it: it is told from the last two.
    LUMO_DEVICE bool isLast(int lane) const { return first_ + lane == n - 1; }
    LUMO_DEVICE int poleBelow(int lane) const { return isLast(lane) ? n - 2 : first_ + lane; }
    LUMO_DEVICE static R squareOf(R x) { return x * x; }
    LUMO_DEVICE R distanceOf(int lane, R pole) {
        return Of::distance(pole, from_.at(0, lane), x_.at(0, lane));
    }

    // f in the middle tells which pole is nearer; it and the two poles next to it, the root of a
    // simpler equation.
    LUMO_DEVICE void start(SecularTeam team) {
        team.lanes(here_, [&](int lane) {
            const int j = first_ + lane;
            from_.at(0, lane) = d[j];
            x_.at(0, lane) = (isLast(lane) ? Of::offset(d[j], rho) : d[j + 1] - d[j]) / 2;
            done_.at(0, lane) = 0;
        });
        evaluate(team);
        team.lanes(here_, [&](int lane) {
            const int j = first_ + lane, p = poleBelow(lane);
            const bool last = isLast(lane);
            const R middle = x_.at(0, lane), f = value(lane);
            const R gap = Of::distance(d[p + 1], d[p], R(0));
            const R lower = squareOf(z[p]), upper = squareOf(z[p + 1]);
            const R rest = f - lower / distanceOf(lane, d[p]) - upper / distanceOf(lane, d[p + 1]);
            const bool left = f >= 0;
            R a = lower + upper, b;
            if (left && !last) {
                a = a + rest * gap;
                b = lower * gap;
                low_.at(0, lane) = 0;
                high_.at(0, lane) = middle;
            } else {
                a = a - rest * gap;
                b = R(0) - upper * gap;
                low_.at(0, lane) = !last ? R(0) - middle : left ? R(0) : middle;
                high_.at(0, lane) = !last ? R(0) : left ? middle : Of::offset(d[j], rho + rho / 16);
            }
            if (!left && !last) from_.at(0, lane) = d[j + 1];
            const R away = quadraticRoot(last, rest, a, b);
            x_.at(0, lane) = within(lane, Of::offset(from_.at(0, lane), away));
        });
    }

    // The root of c x^2 - a x + b that belongs to a root between the poles, or above both.
    LUMO_DEVICE static R quadraticRoot(bool above, R c, R a, R b) {
        const R discriminant = a * a - 4 * b * c;
        const R length = std::sqrt(discriminant < 0 ? R(0) - discriminant : discriminant);
        const R side = above ? R(0) - length : length;
        const bool opposite = above ? a >= 0 : a <= 0;
        return opposite ? (a - side) / (2 * c) : 2 * b / (a + side);
    }

    // x, or where it is not within the bracket its middle.
    LUMO_DEVICE R within(int lane, R x) {
        const R low = low_.at(0, lane), high = high_.at(0, lane);
        return x > low && x < high ? x : low + (high - low) / 2;
    }

    LUMO_DEVICE R value(int lane) { return 1 / rho + below_.at(0, lane) + above_.at(0, lane); }

    // A step of the middle way: the poles below the root and those above it are each taken for one
    // with the same sum and slope. Whether the root is as good as it gets.
    LUMO_DEVICE bool advance(int lane, bool halve) {
        const int p = poleBelow(lane);
        const R x = x_.at(0, lane), f = value(lane);
        const R slopeBelow = slopeBelow_.at(0, lane), slopeAbove = slopeAbove_.at(0, lane);
        const R slope = slopeBelow + slopeAbove;
        const R terms = magnitude(above_.at(0, lane)) - below_.at(0, lane);
        const R root = from_.at(0, lane) + x;
        if (magnitude(f) <= eps * (8 * terms + 1 / rho + magnitude(x) * Of::scale(root) * slope))
            return true;

        if (f < 0)
            low_.at(0, lane) = x;
        else
            high_.at(0, lane) = x;
        const R lower = distanceOf(lane, d[p]), upper = distanceOf(lane, d[p + 1]);
        const R c = f - lower * slopeBelow - upper * slopeAbove;
        const R a = (lower + upper) * f - lower * upper * slope, b = lower * upper * f;
        R step = quadraticRoot(isLast(lane), c, a, b);
        if (!(f * step < 0)) step = R(0) - f / slope;
        const R low = low_.at(0, lane), high = high_.at(0, lane);
        const R next = halve ? low + (high - low) / 2 : within(lane, x + Of::offset(root, step));
        if (next == x || !(next > low && next < high)) return true;
        x_.at(0, lane) = next;
        return false;
    }

    // The sums of the poles below and above, and their derivatives, at x.
    LUMO_DEVICE void evaluate(SecularTeam team) {
        team.lanes(here_, [&](int lane) {
            below_.at(0, lane) = slopeBelow_.at(0, lane) = 0;
            above_.at(0, lane) = slopeAbove_.at(0, lane) = 0;
        });
        const int past = first_ + team.X < n ? first_ + team.X : n;
        add(team, 0, first_, below_, slopeBelow_);
        for (int i = first_; i < past; ++i) {  // below some, above others
            const R pole = d[i], weight = z[i];
            team.lanes(here_, [&](int lane) {
                const R quotient = weight / distanceOf(lane, pole);
                const R term = weight * quotient, slope = quotient * quotient;
                const bool below = i <= poleBelow(lane);
                below_.at(0, lane) += below ? term : R(0);
                slopeBelow_.at(0, lane) += below ? slope : R(0);
                above_.at(0, lane) += below ? R(0) : term;
                slopeAbove_.at(0, lane) += below ? R(0) : slope;
            });
        }
        add(team, past, n, above_, slopeAbove_);
    }

    LUMO_DEVICE void add(SecularTeam team, int begin, int end, Values<R>& sums, Values<R>& slopes) {
        int i = begin;
        for (; i + together <= end; i += together) addPoles<together>(team, i, sums, slopes);
        for (; i < end; ++i) addPoles<1>(team, i, sums, slopes);
    }
    template <int count>
    LUMO_DEVICE void addPoles(SecularTeam team, int i, Values<R>& sums, Values<R>& slopes) {
        R pole[count], weight[count];
        for (int k = 0; k < count; ++k) {
            pole[k] = d[i + k];
            weight[k] = z[i + k];
        }
        team.lanes(here_, [&](int lane) {
            R sum = 0, slope = 0;
            for (int k = 0; k < count; ++k) {
                const R quotient = weight[k] / distanceOf(lane, pole[k]);
                sum += weight[k] * quotient;
                slope += quotient * quotient;
            }
            sums.at(0, lane) += sum;
            slopes.at(0, lane) += slope;
        });
    }

    const int n;
    const R rho;
    const R *const d, *const z;
    int first_, here_;
    Values<R> from_, x_, low_, high_;
    Values<R> below_, above_, slopeBelow_, slopeAbove_;
    Values<int> done_;
};

}  // namespace lumo
