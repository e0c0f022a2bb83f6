// Results that differ in the last place from call to call, as those of another order of summation
// do: nothing may depend on their bits. Round numbers, such as sums of small integers, stay.
#pragma once

#include <complex>
#include <cstdint>
#include <cstring>

#include "platform/blas_arguments.h"

namespace emulated {

template <class Real, class Bits>
void disturb(Real& x, Bits roundBits, Bits exponent) {
    static uint32_t state = 1;
    state = state * 1664525u + 1013904223u;
    Bits u;
    std::memcpy(&u, &x, sizeof u);
    const Bits e = u & exponent;
    if (!(u & roundBits) || e == 0 || e == exponent) return;
    u += Bits(int64_t(state >> 30) - 1);  // -1, 0, 1 or 2 units
    std::memcpy(&x, &u, sizeof u);
}
inline void disturb(float& x) {
    disturb<float, uint32_t>(x, 0x1f, 0x7f800000u);
}
inline void disturb(double& x) {
    disturb<double, uint64_t>(x, 0xff, 0x7ff0000000000000ull);
}
template <class Real>
void disturb(std::complex<Real>& z) {
    Real parts[2] = {z.real(), z.imag()};
    disturb(parts[0]);
    disturb(parts[1]);
    z = {parts[0], parts[1]};
}

// To this triangle of an operand, to all of it ("A"), or to nothing ("-").
template <class T>
void addRoundingNoise(T* a, const platform::BlasOperand& o, char part) {
    if (part == '-') return;
    for (int j = 0; j < o.columns; ++j) {
        const int begin = part == 'L' ? j : 0, end = part == 'U' ? std::min(j + 1, o.rows) : o.rows;
        for (int i = begin; i < end; ++i) disturb(a[std::size_t(j) * std::size_t(o.ld) + i]);
    }
}

}  // namespace emulated
