#include <limits>

#include "basic/magnitude.h"
#include "cudalib/kernel.h"

using lumo::Complex;
using lumo::magnitude;
using lumo::RealOf;

template <class T>
struct Rotation {
    RealOf<T> c;
    T s, r;
};

// LAPACK xLARGV for real elements: the quotient is never above 1.
template <class R>
LUMO_DEVICE Rotation<R> rotation(R f, R g) {
    if (g == 0) return {R(1), R(0), f};
    if (f == 0) return {R(0), R(1), g};
    if (magnitude(f) > magnitude(g)) {
        const R t = g / f, root = std::sqrt(1 + t * t), c = 1 / root;
        return {c, t * c, f * root};
    }
    const R t = f / g, root = std::sqrt(1 + t * t), s = 1 / root;
    return {t * s, s, g * root};
}

// 2^exponent as a constant.
template <class R>
constexpr R powerOfTwo(int exponent) {
    R power = 1;
    for (; exponent > 0; --exponent) power *= 2;
    for (; exponent < 0; ++exponent) power /= 2;
    return power;
}

template <class R>
struct Scales {
    using Limits = std::numeric_limits<R>;
    static constexpr R safeMinimum = Limits::min();
    // The square root of the safe minimum over the unit roundoff, exponent rounded to zero.
    static constexpr R tiny = powerOfTwo<R>((Limits::min_exponent - 1 + Limits::digits) / 2);
    static constexpr R huge = 1 / tiny;
};

template <class R>
LUMO_DEVICE R largerPart(Complex<R> z) {
    const R re = magnitude(z.re), im = magnitude(z.im);
    return re > im ? re : im;
}

// z / |z|.
template <class R>
LUMO_DEVICE Complex<R> direction(Complex<R> z) {
    const R size = lumo::length(z.re, z.im);
    return {z.re / size, z.im / size};
}

// LAPACK CLARGV: f and g are scaled by powers of two to where their squares are safe, r is scaled
// back.
template <class R>
LUMO_DEVICE Rotation<Complex<R>> rotation(Complex<R> f, Complex<R> g) {
    using C = Complex<R>;
    constexpr R tiny = Scales<R>::tiny, huge = Scales<R>::huge;
    constexpr int mostSteps = 20;
    const C zero(R(0));

    if (g == zero) return {R(1), zero, f};
    C fs = f, gs = g;
    const R largerF = largerPart(f), largerG = largerPart(g);
    R scale = largerF > largerG ? largerF : largerG, back = R(1);
    int steps = 0;
    if (scale >= huge) {
        back = huge;
        for (; scale >= huge && steps < mostSteps; ++steps, scale *= tiny) {
            fs = tiny * fs;
            gs = tiny * gs;
        }
    } else if (scale <= tiny) {
        back = tiny;
        for (; scale <= tiny && steps < mostSteps; ++steps, scale *= huge) {
            fs = huge * fs;
            gs = huge * gs;
        }
    }
    const R f2 = lumo::square(fs), g2 = lumo::square(gs);
    if (f2 <= (g2 > 1 ? g2 : R(1)) * Scales<R>::safeMinimum) {  // f is very small beside g
        if (f == zero) return {R(0), conjugate(direction(gs)), C(lumo::length(g.re, g.im))};
        const R c = lumo::length(fs.re, fs.im) / std::sqrt(g2);
        const C ff = largerPart(f) > 1 ? direction(f) : direction(huge * f);
        const C s = ff * conjugate(direction(gs));
        return {c, s, c * f + s * g};
    }
    const R root = std::sqrt(1 + g2 / f2), both = f2 + g2;
    C r = root * fs;
    const C s = C(r.re / both, r.im / both) * conjugate(gs);
    for (; steps > 0; --steps) r = back * r;
    return {1 / root, s, r};
}

// A complex instance names its real type as well.
template <class T, class... Real>
LUMO_KERNEL void LARGV_k(int n, T* x, int incx, T* y, int incy, RealOf<T>* c, int incc) {
    cudalib::kernel<16>([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) {
            T& xi = x[i * std::size_t(incx)];
            T& yi = y[i * std::size_t(incy)];
            const Rotation<T> made = rotation(xi, yi);
            c[i * std::size_t(incc)] = made.c;
            yi = made.s;
            xi = made.r;
        });
    });
}

LUMO_REGISTER(lumo::RealTypes, cudalib::Kernel<&LARGV_k<T>, cudalib::OnVector<T, 5>>,
              cudalib::Kernel<&LARGV_k<Complex<T>, T>, cudalib::OnVector<Complex<T>, 5>>)
