// Absolute values in kernels, without overflow or underflow on the way.
#pragma once

#include <cmath>

#include "cudalib/block.h"

namespace lumo {

template <class R>
LUMO_DEVICE R realPart(R a) {
    return a;
}
template <class R>
LUMO_DEVICE R realPart(Complex<R> a) {
    return a.re;
}
template <class R>
LUMO_DEVICE R imaginaryPart(R) {
    return R(0);
}
template <class R>
LUMO_DEVICE R imaginaryPart(Complex<R> a) {
    return a.im;
}

template <class R>
LUMO_DEVICE R magnitude(R a) {
    return a < 0 ? -a : a;
}

// |a|^2.
template <class T>
LUMO_DEVICE RealOf<T> square(T a) {
    return realPart(a) * realPart(a) + imaginaryPart(a) * imaginaryPart(a);
}

// The length of (a, b, c) (LAPACK xLAPY3); not a number if one of them is not.
template <class R>
LUMO_DEVICE R length(R a, R b, R c = R(0)) {
    a = magnitude(a);
    b = magnitude(b);
    c = magnitude(c);
    const R ab = a > b ? a : b, largest = ab > c ? ab : c;
    if (largest == 0) return a + b + c;
    a = a / largest;
    b = b / largest;
    c = c / largest;
    return largest * std::sqrt(a * a + b * b + c * c);
}

}  // namespace lumo
