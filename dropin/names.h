// Under which names, and with which integers, programs call a routine; and how a symbol is exported
// under all of them.
//
// An `Entry` is a routine's for one type: its description, its name ("sgemm"), and Lumo's function.
#pragma once

#include <cstdint>
#include <type_traits>

#include "common/letters.h"
#include "dropin/serve.h"

namespace lumo::dropin {

// What stands before and behind the usual names, of BLAS and LAPACK as the system has them, and as
// Python's packages bring them along. Those that end so have integers of 64 bits.
struct Names {
    using Integer = int;
    static constexpr const char *prefix = "", *suffix = "";
};
struct Names64 {
    using Integer = std::int64_t;
    static constexpr const char *prefix = "", *suffix = "64_";
};
struct ScipyNames : Names {
    static constexpr const char* prefix = "scipy_";
};
struct ScipyNames64 : Names64 {
    static constexpr const char* prefix = "scipy_";
};
#define LUMO_UNDER_ALL_NAMES(EXPORT, symbol) \
    EXPORT(symbol, Names, , );               \
    EXPORT(symbol, Names64, , 64_);          \
    EXPORT(symbol, ScipyNames, scipy_, );    \
    EXPORT(symbol, ScipyNames64, scipy_, 64_)

// `before` and `behind` are the interface's own around the routine's name: cblas_, or Fortran's _.
template <class Entry, class Names>
Symbol& symbolOf(const char* before, const char* behind = "") {
    return *new Symbol(Entry::name(),
                       {Names::prefix, before, Entry::name(), behind, Names::suffix});
}

// The entry of a symbol, inside a function.
#define LUMO_SERVED(symbol, Description, function)    \
    struct served_##symbol {                          \
        using Routine [[maybe_unused]] = Description; \
        static const char* name() { return #symbol; } \
        static auto lumo() { return &function; }      \
    }

// Exports a function under a C name, and notes the name for detach.cpp.
#define LUMO_EXPORT(symbol, ...)            \
    LUMO_EXPORT_ALIAS(symbol, __VA_ARGS__); \
    asm volatile(".pushsection lumo_exports, \"a\"\n\t.asciz \"" #symbol "\"\n\t.popsection")

// Where the caller of an exported function is; in that function itself.
#define LUMO_CALLER __builtin_extract_return_addr(__builtin_return_address(0))

// --- Arguments -------------------------------------------------------------------------------

// An argument of Lumo's function with the caller's integers.
template <class A, class Integer>
struct WithIntegers {
    using Type = A;
};
template <class Integer>
struct WithIntegers<int, Integer> {
    using Type = Integer;
};
template <class Integer>
struct WithIntegers<int*, Integer> {
    using Type = Integer*;
};
template <class Integer>
struct WithIntegers<const int*, Integer> {
    using Type = const Integer*;
};
template <class A, class Names>
using Callers = typename WithIntegers<A, typename Names::Integer>::Type;

// Whether a number is one for Lumo.
template <class Argument>
bool fits(Argument argument) {
    if constexpr (std::is_integral_v<Argument>) return Argument(int(argument)) == argument;
    return true;
}

// The caller's argument as Lumo's. Integers behind a pointer stay what they are: they are operands
// of the description, for which there are StandIns.
template <class A, class Argument>
A narrowed(Argument argument) {
    if constexpr (std::is_same_v<A, Argument>)
        return argument;
    else if constexpr (std::is_pointer_v<A>)
        return reinterpret_cast<A>(argument);
    else
        return A(argument);
}

}  // namespace lumo::dropin
