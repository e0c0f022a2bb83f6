// What data are like.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "common/complex.h"
#include "common/matrix.h"

namespace lumo::dropin {

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
        const auto* column = reinterpret_cast<const char*>(at(a, lda, 0, j));
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
