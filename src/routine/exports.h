// The exported functions of a routine. Their signatures stand in the headers; from those, and from
// the routine's description, whose members are the same arguments, come the functions.
#pragma once

#include "routine/c_interface.h"
#include "routine/frame.h"

namespace lumo {

// A description's members, for whoever includes its header alone.
#define LUMO_INSTANTIATE_MEMBERS(Routine)    \
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

// lumoXname and lumoDeviceXname for one type's letter X.
#define LUMO_EXPORT(letter, T, name, Routine)                                     \
    LUMO_EXPORT_ALIAS(lumo##letter##name,                                         \
                      Exported<Routine<T>, decltype(&lumo##letter##name)>::host); \
    LUMO_EXPORT_ALIAS(lumoDevice##letter##name,                                   \
                      Exported<Routine<T>, decltype(&lumoDevice##letter##name)>::device)

// The exports of a routine, for the types that it has.
#define LUMO_EXPORT_S_D(name, Routine)          \
    [[gnu::used]] static void name##Exports() { \
        LUMO_EXPORT(S, float, name, Routine);   \
        LUMO_EXPORT(D, double, name, Routine);  \
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
