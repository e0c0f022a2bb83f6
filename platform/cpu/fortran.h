// How routines of Fortran are declared and called: every argument goes by reference, and behind
// them follow the lengths of those that are strings. Here they are written, and called, by value.
#pragma once

#include <cstddef>
#include <utility>

#include "platform/element_types.h"

namespace cpu {

template <class A>
const A* reference(const A& argument) {
    return &argument;
}
template <class A>
A* reference(A* const& argument) {
    return argument;
}
template <class A>
using Reference = decltype(reference(std::declval<const A&>()));

// An index for each string, which is a letter.
template <class... A>
using Strings = std::make_index_sequence<(0 + ... + int(std::is_same_v<A, char>))>;

// What Fortran makes of a signature. One that returns int is LAPACK's: that is info, its last
// argument.
template <class Result, class Indices, class... A>
struct FortranType;
template <std::size_t... i, class... A>
struct FortranType<void, std::index_sequence<i...>, A...> {
    using Type = void(Reference<A>..., decltype(i)...);
};
template <std::size_t... i, class... A>
struct FortranType<int, std::index_sequence<i...>, A...> {
    using Type = void(Reference<A>..., int*, decltype(i)...);
};

template <class Signature>
struct Routine;
template <class Result, class... A>
struct Routine<Result(A...)> {
    using Fortran = typename FortranType<Result, Strings<A...>, A...>::Type;
    Fortran* const fortran;

    Result operator()(A... arguments) const { return call(Strings<A...>(), arguments...); }

  private:
    template <std::size_t... i>
    Result call(std::index_sequence<i...>, const A&... arguments) const {
        if constexpr (std::is_void_v<Result>) {
            fortran(reference(arguments)..., (void(i), std::size_t(1))...);
        } else {
            int info = 0;
            fortran(reference(arguments)..., &info, (void(i), std::size_t(1))...);
            return info;
        }
    }
};

// Declares Fortran's S_, D_, C_ and Z_, and name<T>, which calls that of the element type T. The
// signature is written in T and its real type R.
#define CPU_ROUTINE(name, S, D, C, Z, ...)             \
    template <class T, class R = platform::RealOf<T>>  \
    using name##Routine = Routine<__VA_ARGS__>;        \
    extern "C" {                                       \
    name##Routine<float>::Fortran S##_;                \
    name##Routine<double>::Fortran D##_;               \
    name##Routine<std::complex<float>>::Fortran C##_;  \
    name##Routine<std::complex<double>>::Fortran Z##_; \
    }                                                  \
    template <class T>                                 \
    inline constexpr name##Routine<T> name{platform::ofType<T>(S##_, D##_, C##_, Z##_)};

}  // namespace cpu
