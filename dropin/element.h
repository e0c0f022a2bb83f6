// The four element types, as the interface of Lumo has them, and what differs between them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "lumo.h"

namespace lumo::dropin {

template <class T>
struct Element {
    using Real = T;
    static constexpr bool complex = false;
    static constexpr char letter = std::is_same_v<T, float> ? 's' : 'd';
};
template <>
struct Element<lumoFloatComplex> {
    using Real = float;
    static constexpr bool complex = true;
    static constexpr char letter = 'c';
};
template <>
struct Element<lumoDoubleComplex> {
    using Real = double;
    static constexpr bool complex = true;
    static constexpr char letter = 'z';
};
template <class T>
using RealOf = typename Element<T>::Real;
template <class T>
constexpr bool isComplex = Element<T>::complex;

template <class T>
bool isZero(T x) {
    if constexpr (isComplex<T>)
        return x.re == 0 && x.im == 0;
    else
        return x == 0;
}

template <class T>
T conjugated(T x) {
    if constexpr (isComplex<T>) x.im = -x.im;
    return x;
}

// Of the functions of a family, the one of the element type; a null for one that there is not.
template <class T, class S, class D, class C, class Z>
constexpr auto pick(S s, D d, C c, Z z) {
    if constexpr (std::is_same_v<T, float>)
        return s;
    else if constexpr (std::is_same_v<T, double>)
        return d;
    else if constexpr (std::is_same_v<T, lumoFloatComplex>)
        return c;
    else
        return z;
}

// The largest magnitude of the parts of the elements of a matrix; infinity or a NaN if one of them
// is no number. The bits of magnitudes order like the magnitudes, those two above the rest, and
// integers are compared eight at a time.
template <class T>
RealOf<T> largest(const T* a, int m, int n, int lda) {
    using Real = RealOf<T>;
    using Bits = std::conditional_t<sizeof(Real) == 4, std::uint32_t, std::uint64_t>;
    constexpr Bits magnitude = ~(Bits(1) << (8 * sizeof(Bits) - 1));
    constexpr int parts = isComplex<T> ? 2 : 1;
    Bits most = 0;
    for (int j = 0; j < n; ++j) {
        const auto* column = reinterpret_cast<const char*>(a + std::ptrdiff_t(j) * lda);
        for (std::ptrdiff_t i = 0; i < std::ptrdiff_t(parts) * m; ++i) {
            Bits bits;
            std::memcpy(&bits, column + i * std::ptrdiff_t(sizeof bits), sizeof bits);
            most = std::max(most, bits & magnitude);
        }
    }
    Real value;
    std::memcpy(&value, &most, sizeof value);
    return value;
}

template <class T>
bool isFinite(const T* a, int m, int n, int lda) {
    return std::isfinite(largest(a, m, n, lda));
}

}  // namespace lumo::dropin
