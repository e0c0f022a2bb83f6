// Between the C interface and the library: numbers of the one as numbers of the other, and C names
// for functions of C++.
#pragma once

#include "common/complex.h"
#include "lumo_extended.h"

namespace lumo {

// A number, or a pointer to numbers, of the C interface as the library's own type.
template <class T>
T element(T real) {
    return real;
}
inline Complex<float> element(lumoFloatComplex z) {
    return {z.re, z.im};
}
inline Complex<double> element(lumoDoubleComplex z) {
    return {z.re, z.im};
}
inline Complex<float>* element(lumoFloatComplex* p) {
    return reinterpret_cast<Complex<float>*>(p);
}
inline Complex<double>* element(lumoDoubleComplex* p) {
    return reinterpret_cast<Complex<double>*>(p);
}
inline const Complex<float>* element(const lumoFloatComplex* p) {
    return reinterpret_cast<const Complex<float>*>(p);
}
inline const Complex<double>* element(const lumoDoubleComplex* p) {
    return reinterpret_cast<const Complex<double>*>(p);
}

// The other way round.
template <class T>
T external(T real) {
    return real;
}
inline lumoFloatComplex external(Complex<float> z) {
    return {z.re, z.im};
}
inline lumoDoubleComplex external(Complex<double> z) {
    return {z.re, z.im};
}
inline lumoFloatComplex* external(Complex<float>* p) {
    return reinterpret_cast<lumoFloatComplex*>(p);
}
inline lumoDoubleComplex* external(Complex<double>* p) {
    return reinterpret_cast<lumoDoubleComplex*>(p);
}
inline const lumoFloatComplex* external(const Complex<float>* p) {
    return reinterpret_cast<const lumoFloatComplex*>(p);
}
inline const lumoDoubleComplex* external(const Complex<double>* p) {
    return reinterpret_cast<const lumoDoubleComplex*>(p);
}

// Gives a function its C name as well: an alias, so that the arguments need not be listed again,
// at which a debugger stops as at any function. Inside a function, which need not be called.
#define LUMO_EXPORT_ALIAS(symbol, ...)                                                 \
    asm volatile(".globl " #symbol "\n\t.type " #symbol ", @function\n\t.set " #symbol \
                 ", "                                                                  \
                 "%c0" ::"i"(&__VA_ARGS__))

}  // namespace lumo
