// Numbers, and pointers to numbers, as the library's interface has them: its complex numbers have
// the layout of C++'s.
#pragma once

#include <complex>

#include "lumo.h"

namespace lumo {

inline float exported(float x) {
    return x;
}
inline double exported(double x) {
    return x;
}
inline lumoFloatComplex exported(std::complex<float> z) {
    return {z.real(), z.imag()};
}
inline lumoDoubleComplex exported(std::complex<double> z) {
    return {z.real(), z.imag()};
}
template <class T>
auto exported(T* numbers) {
    return reinterpret_cast<decltype(exported(T()))*>(numbers);
}
template <class T>
auto exported(const T* numbers) {
    return reinterpret_cast<const decltype(exported(T()))*>(numbers);
}

}  // namespace lumo
