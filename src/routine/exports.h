// The exported functions of a routine. Their signatures stand in lumo.h; from those, and from the
// routine's description, whose members are the same arguments, come the functions.
#pragma once

#include "lumo.h"
#include "routine/frame.h"
#include "runtime/complex.h"

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

// A description's members, for whoever includes its header alone.
#define LUMO_INSTANTIATE(Routine)            \
    template struct Routine<float>;          \
    template struct Routine<double>;         \
    template struct Routine<Complex<float>>; \
    template struct Routine<Complex<double>>;

template <class Routine, class Function>
struct Exported;

template <class Routine, class... A>
struct Exported<Routine, lumoStatus (*)(A...)> {
    static lumoStatus host(A... arguments) { return onHost(Routine{element(arguments)...}); }
    static lumoStatus device(A... arguments) { return onDevice(Routine{element(arguments)...}); }
};

// Gives a function its C name as well: an alias, so that the arguments need not be listed again,
// at which a debugger stops as at any function. Inside a function, which need not be called.
#define LUMO_EXPORT_ALIAS(symbol, ...)                                                 \
    asm volatile(".globl " #symbol "\n\t.type " #symbol ", @function\n\t.set " #symbol \
                 ", "                                                                  \
                 "%c0" ::"i"(&__VA_ARGS__))

// lumoXname and lumoDeviceXname for one type's letter X.
#define LUMO_EXPORT(letter, T, name, Routine)                                     \
    LUMO_EXPORT_ALIAS(lumo##letter##name,                                         \
                      Exported<Routine<T>, decltype(&lumo##letter##name)>::host); \
    LUMO_EXPORT_ALIAS(lumoDevice##letter##name,                                   \
                      Exported<Routine<T>, decltype(&lumoDevice##letter##name)>::device)

// The exports of a routine, for the types that it has.
#define LUMO_EXPORT_S_C(name, Routine)                 \
    [[gnu::used]] static void name##Exports() {        \
        LUMO_EXPORT(S, float, name, Routine);          \
        LUMO_EXPORT(C, Complex<float>, name, Routine); \
    }
#define LUMO_EXPORT_C_Z(name, Routine)                  \
    [[gnu::used]] static void name##Exports() {         \
        LUMO_EXPORT(C, Complex<float>, name, Routine);  \
        LUMO_EXPORT(Z, Complex<double>, name, Routine); \
    }
#define LUMO_EXPORT_S_D_C_Z(name, Routine)              \
    [[gnu::used]] static void name##Exports() {         \
        LUMO_EXPORT(S, float, name, Routine);           \
        LUMO_EXPORT(D, double, name, Routine);          \
        LUMO_EXPORT(C, Complex<float>, name, Routine);  \
        LUMO_EXPORT(Z, Complex<double>, name, Routine); \
    }

}  // namespace lumo
