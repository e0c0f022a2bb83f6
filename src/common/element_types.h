// The types that the library computes in, and templates made for all of them.
#pragma once

#include "common/complex.h"

namespace lumo {

template <class... T>
struct Types {
    template <template <class...> class Whole, template <class> class Part>
    using Each = Whole<Part<T>...>;
};

using RealTypes = Types<float, double>;
using ComplexTypes = Types<Complex<float>, Complex<double>>;
using ElementTypes = Types<float, double, Complex<float>, Complex<double>>;

}  // namespace lumo

// Explicit instantiation of one function, f<arguments>, and of a function template for each type of
// a list above: the template's name says it all, for its signature is where it is defined.
#define LUMO_INSTANTIATE_ONE(...) template decltype(__VA_ARGS__) __VA_ARGS__;
#define LUMO_INSTANTIATE_REAL(function)   \
    LUMO_INSTANTIATE_ONE(function<float>) \
    LUMO_INSTANTIATE_ONE(function<double>)
#define LUMO_INSTANTIATE_COMPLEX(function)               \
    LUMO_INSTANTIATE_ONE(function<lumo::Complex<float>>) \
    LUMO_INSTANTIATE_ONE(function<lumo::Complex<double>>)
#define LUMO_INSTANTIATE(function)  \
    LUMO_INSTANTIATE_REAL(function) \
    LUMO_INSTANTIATE_COMPLEX(function)
