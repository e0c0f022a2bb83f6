// Instructions on numbers alone, where C++ has no operator for them.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace emulated {

template <class To, class Of>
To bits(Of of) {
    static_assert(sizeof(To) == sizeof(Of));
    To to;
    std::memcpy(&to, &of, sizeof to);
    return to;
}

// Not 0 - x, which is another number for zeros and NaNs.
inline float negate(float x) {
    return bits<float>(bits<uint32_t>(x) ^ 0x80000000u);
}
inline double negate(double x) {
    return bits<double>(bits<uint64_t>(x) ^ 0x8000000000000000ull);
}

template <class T>
T wrapped(T a, T b) {
    if constexpr (std::is_integral_v<T>) {
        using U = std::make_unsigned_t<T>;
        return T(U(a) + U(b));
    } else {
        return a + b;
    }
}

// Shifts by the width and more empty a number.
template <class T>
T shiftLeft(T x, uint32_t n) {
    return n >= sizeof(T) * 8 ? T(0) : T(x << n);
}
template <class T>
T shiftRight(T x, uint32_t n) {
    if (n >= sizeof(T) * 8) return x < 0 ? T(-1) : T(0);
    return T(x >> n);
}

template <class T>
T highHalf(T a, T b) {
    using Wide = std::conditional_t<std::is_signed_v<T>, __int128, unsigned __int128>;
    return T(Wide(a) * Wide(b) >> sizeof(T) * 8);
}

template <class T>
uint32_t countBits(T x) {
    return uint32_t(__builtin_popcountll(std::make_unsigned_t<T>(x)));
}
template <class T>
uint32_t leadingZeros(T x) {
    constexpr uint32_t width = sizeof(T) * 8;
    return x == 0 ? width : uint32_t(__builtin_clzll(std::make_unsigned_t<T>(x))) - (64 - width);
}
template <class T>
T reverseBits(T x) {
    T y = 0;
    for (unsigned i = 0; i < sizeof(T) * 8; ++i) y |= T((x >> i & 1) << (sizeof(T) * 8 - 1 - i));
    return y;
}
// Of a negative number the highest bit that is not set.
template <class T>
uint32_t highestBit(T x, bool asShift) {
    const auto u = std::make_unsigned_t<T>(x < 0 ? ~x : x);
    if (u == 0) return 0xffffffffu;
    return asShift ? leadingZeros(u) : uint32_t(sizeof(T) * 8 - 1) - leadingZeros(u);
}
template <class T>
T extractBits(T x, uint32_t position, uint32_t length) {
    constexpr int width = sizeof(T) * 8;
    const int from = int(position & 0xff), count = int(length & 0xff);
    if (count == 0) return 0;
    const bool sign = std::is_signed_v<T> && (x >> std::min(from + count - 1, width - 1) & 1);
    T y = sign ? T(-1) : T(0);
    for (int i = 0; i < count && i < width; ++i) {
        const bool bit = from + i < width ? (x >> (from + i)) & 1 : sign;
        y = T(bit ? y | T(1) << i : y & ~(T(1) << i));
    }
    return y;
}
template <class T>
T insertBits(T x, T into, uint32_t position, uint32_t length) {
    for (uint32_t i = 0; i < (length & 0xff) && (position & 0xff) + i < sizeof(T) * 8; ++i) {
        const T bit = T(1) << ((position & 0xff) + i);
        into = T((x >> i & 1) ? into | bit : into & ~bit);
    }
    return into;
}
inline uint32_t logic3(uint32_t a, uint32_t b, uint32_t c, uint32_t table) {
    uint32_t y = 0;
    for (int i = 0; i < 32; ++i)
        y |= (table >> ((a >> i & 1) << 2 | (b >> i & 1) << 1 | (c >> i & 1)) & 1) << i;
    return y;
}
inline uint32_t permuteBytes(uint32_t a, uint32_t b, uint32_t selectors) {
    const uint64_t from = uint64_t(b) << 32 | a;
    uint32_t y = 0;
    for (int i = 0; i < 4; ++i) {
        const uint32_t selector = selectors >> 4 * i & 0xf;
        uint32_t byte = uint32_t(from >> 8 * (selector & 7)) & 0xff;
        if (selector & 8) byte = byte & 0x80 ? 0xff : 0;
        y |= byte << 8 * i;
    }
    return y;
}
// Shifts the 64 bits (b, a): to the left, giving the upper half, or to the right.
inline uint32_t funnel(uint32_t a, uint32_t b, uint32_t n, bool left, bool wrap) {
    n = wrap ? n & 31 : std::min(n, 32u);
    const uint64_t both = uint64_t(b) << 32 | a;
    return left ? uint32_t(both << n >> 32) : uint32_t(both >> n);
}

template <class T, class... Part>
T packed(Part... parts) {
    T all = 0;
    int i = 0;
    ((all |= T(T(parts) << 8 * int(sizeof(parts)) * i++)), ...);
    return all;
}

// Numbers beyond the range become its ends, NaN zero.
enum class Towards { nearest, zero, down, up };
template <class To, class Real>
To toInteger(Real x, Towards towards) {
    if (x != x) return 0;
    const Real y = towards == Towards::nearest ? std::nearbyint(x)
                   : towards == Towards::zero  ? std::trunc(x)
                   : towards == Towards::down  ? std::floor(x)
                                               : std::ceil(x);
    using Limits = std::numeric_limits<To>;
    if (y <= Real(Limits::min())) return Limits::min();
    if (y >= Real(Limits::max())) return Limits::max();
    return To(y);
}

}  // namespace emulated
