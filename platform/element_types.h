// The element types of BLAS and LAPACK, S, D, C and Z: float, double, and complex numbers of both.
#pragma once

#include <complex>
#include <type_traits>

namespace platform {

// A complex number is the instance for its reals of any template, as std::complex is.
template <class T>
struct RealType {
    using Type = T;
};
template <template <class> class Complex, class T>
struct RealType<Complex<T>> {
    using Type = T;
};
template <class T>
using RealOf = typename RealType<T>::Type;
template <class T>
constexpr bool isComplex = !std::is_same_v<T, RealOf<T>>;
template <class T>
constexpr bool isDouble = std::is_same_v<RealOf<T>, double>;

template <class T>
T conjugate(T a) {
    if constexpr (isComplex<T>)
        return std::conj(a);
    else
        return a;
}

// What belongs to an element type.
template <class T, class S, class D, class C, class Z>
constexpr auto ofType(S s, D d, C c, Z z) {
    if constexpr (isComplex<T>)
        return ofType<RealOf<T>>(c, z, c, z);
    else if constexpr (isDouble<T>)
        return d;
    else
        return s;
}
template <class T>
constexpr char letter = ofType<T>('S', 'D', 'C', 'Z');

// f(a zero of the type that this letter stands for).
template <class F>
auto withType(char letter, F f) {
    return letter == 'S'   ? f(float())
           : letter == 'D' ? f(double())
           : letter == 'C' ? f(std::complex<float>())
                           : f(std::complex<double>());
}

}  // namespace platform
