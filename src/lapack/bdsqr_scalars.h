// The scalar kernels of the bidiagonal singular value iteration, on the host.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace lumo {

// As xLAMCH("E") and xLAMCH("S").
template <class Real>
constexpr Real roundingUnit = std::numeric_limits<Real>::epsilon() / 2;
template <class Real>
constexpr Real safeMinimum = std::numeric_limits<Real>::min();

// The rotation [c s; -s c] that takes (f, g) to (r, 0).
template <class Real>
struct GivensRotation {
    Real c, s, r;
};

// c >= 0. One scaling where a square would overflow or underflow, no loop. (LAPACK 3.10 xLARTG;
// Anderson, ACM TOMS 44, 2017.)
template <class Real>
GivensRotation<Real> lartg(Real f, Real g) {
    // Powers of two, so that scaling is exact; between them squares are safe.
    constexpr bool single = std::numeric_limits<Real>::digits == 24;
    constexpr Real low = single ? Real(0x1p-63) : Real(0x1p-511);
    constexpr Real high = single ? Real(0x1p+62) : Real(0x1p+510);
    if (g == 0) return {1, 0, f};
    if (f == 0) return {0, std::copysign(Real(1), g), std::abs(g)};
    const Real larger = std::max(std::abs(f), std::abs(g));
    const Real smaller = std::min(std::abs(f), std::abs(g));
    if (smaller > low && larger < high) {
        const Real norm = std::sqrt(f * f + g * g), r = std::copysign(norm, f);
        return {std::abs(f) / norm, g / r, r};
    }
    const Real scale = std::clamp(larger, safeMinimum<Real>, 1 / safeMinimum<Real>);
    f /= scale;
    g /= scale;
    const Real norm = std::sqrt(f * f + g * g), r = std::copysign(norm, f);
    return {std::abs(f) / norm, g / r, r * scale};
}

// The smaller singular value of [f g; 0 h] (LAPACK xLAS2).
template <class Real>
Real las2(Real f, Real g, Real h) {
    const Real low = std::min(std::abs(f), std::abs(h)), high = std::max(std::abs(f), std::abs(h));
    g = std::abs(g);
    if (low == 0) return 0;
    const Real sum = 1 + low / high, difference = (high - low) / high;
    if (g < high) {
        const Real square = (g / high) * (g / high);
        return low *
               (2 / (std::sqrt(sum * sum + square) + std::sqrt(difference * difference + square)));
    }
    const Real ratio = high / g;
    if (ratio == 0) return low * high / g;  // g is so large that the ratio underflows
    const Real x = sum * ratio, y = difference * ratio;
    return 2 * (low * (1 / (std::sqrt(1 + x * x) + std::sqrt(1 + y * y))) * ratio);
}

// [cl sl; -sl cl] [f g; 0 h] [cr -sr; sr cr] = diag(larger, smaller), |larger| >= |smaller|.
template <class Real>
struct TwoByTwoSvd {
    Real smaller, larger, sr, cr, sl, cl;
};

// LAPACK xLASV2: all of it to nearly full relative accuracy.
template <class Real>
TwoByTwoSvd<Real> lasv2(Real f, Real g, Real h) {
    const auto sign = [](Real x) { return std::copysign(Real(1), x); };
    Real ft = f, ht = h;
    const bool swapped = std::abs(h) > std::abs(f);
    if (swapped) std::swap(ft, ht);
    const Real fa = std::abs(ft), ha = std::abs(ht), ga = std::abs(g);

    Real smaller = ha, larger = fa, clt = 1, crt = 1, slt = 0, srt = 0;
    const bool gLargest = ga > fa;
    if (gLargest && fa / ga < roundingUnit<Real>) {
        larger = ga;
        smaller = ha > 1 ? fa / (ga / ha) : fa / ga * ha;
        slt = ht / g;
        srt = 1;
        crt = ft / g;
    } else if (ga != 0) {
        const Real d = fa - ha;
        const Real l = d == fa ? Real(1) : d / fa;  // d == fa: also for an infinite f
        const Real m = g / ft, t = 2 - l, mm = m * m;
        const Real s = std::sqrt(t * t + mm);
        const Real r = l == 0 ? std::abs(m) : std::sqrt(l * l + mm);
        const Real a = (s + r) / 2;
        smaller = ha / a;
        larger = fa * a;
        Real tangent;  // of twice the angle
        if (mm != 0)
            tangent = (m / (s + t) + m / (r + l)) * (1 + a);
        else if (l == 0)
            tangent = 2 * sign(ft) * sign(g);
        else
            tangent = g / std::copysign(d, ft) + m / t;
        const Real length = std::sqrt(tangent * tangent + 4);
        crt = 2 / length;
        srt = tangent / length;
        clt = (crt + srt * m) / a;
        slt = ht / ft * srt / a;
    }
    TwoByTwoSvd<Real> svd{smaller, larger, srt, crt, slt, clt};
    if (swapped) svd = {smaller, larger, clt, slt, crt, srt};
    const Real positive = gLargest  ? sign(svd.sr) * sign(svd.cl) * sign(g)
                          : swapped ? sign(svd.sr) * sign(svd.sl) * sign(h)
                                    : sign(svd.cr) * sign(svd.cl) * sign(f);
    svd.larger = std::copysign(larger, positive);
    svd.smaller = std::copysign(smaller, positive * sign(f) * sign(h));
    return svd;
}

}  // namespace lumo
