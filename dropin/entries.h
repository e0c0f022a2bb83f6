// The functions behind the exported symbols, made from the signature of Lumo's own functions: the
// Fortran, CBLAS and LAPACKE interfaces differ from it, and from each other, by rule.
//
// An `Entry` is a symbol's: the description of the routine, its name ("sgemm"), and Lumo's
// function.
#pragma once

#include <cstdio>
#include <utility>

#include "common/letters.h"
#include "dropin/serve.h"
#include "platform/cpu/fortran.h"

namespace lumo::dropin {

using cpu::Reference;

// The lengths of the strings, behind Fortran's arguments: one each. Functions without strings do
// not see them.
constexpr std::size_t one = 1;
constexpr std::size_t mostLetters = 4;

template <class A>
A byValue(Reference<A> argument) {
    if constexpr (std::is_pointer_v<A>)
        return argument;
    else
        return *argument;
}

// Of one name: `prefix` and `suffix` around the routine's.
template <class Entry>
Symbol& symbolOf(const char* prefix, const char* suffix = "") {
    return *new Symbol(Entry::name(), prefix + std::string(Entry::name()) + suffix);
}

template <class Entry, class Function = decltype(Entry::lumo())>
struct Fortran;

template <class Entry, class... A>
struct Fortran<Entry, lumoStatus (*)(A...)> {
    static void blas(Reference<A>... a) {
        static Symbol& symbol = symbolOf<Entry>("", "_");
        Passage passage(symbol);
        if (passage.serve<Entry>({element(byValue<A>(a))...})) return;
        symbol.cpu<void(Reference<A>..., std::size_t, std::size_t, std::size_t, std::size_t)>()(
            a..., one, one, one, one);
    }

    // Extra: what stands before info, such as a workspace. Served if that is as it should be, and
    // the length of the workspace no query; its first element becomes the length that the CPU
    // library would have liked.
    template <class... Extra>
    static void lapack(Reference<A>... a, Extra... extra, int* info) {
        using Cpu = void(Reference<A>..., Extra..., int*, std::size_t, std::size_t, std::size_t,
                         std::size_t);
        static Symbol& symbol = symbolOf<Entry>("", "_");
        Cpu* const cpu = symbol.template cpu<Cpu>();
        Passage passage(symbol);
        const Routine routine{element(byValue<A>(a))...};
        if (enough(routine, extra...) && passage.serve<Entry>(routine)) {
            *info = 0;
            if constexpr (sizeof...(Extra) > 0) tellBest(cpu, a..., extra...);
            return;
        }
        cpu(a..., extra..., info, one, one, one, one);
    }

  private:
    using Routine = typename Entry::Routine;
    static bool enough(const Routine&) { return true; }
    template <class T, class... Rest>
    static bool enough(Routine routine, T*, const int* lwork, Rest...) {
        return servable(routine) && *lwork >= Rules<Routine>::leastWork(routine);
    }
    template <class Cpu, class T, class... Rest>
    static void tellBest(Cpu* cpu, Reference<A>... a, T* work, const int*, Rest... rest) {
        const int query = -1;
        int info = 0;
        cpu(a..., work, &query, rest..., &info, one, one, one, one);
    }
};

// CBLAS: enumerations for letters, real scalars by value and complex ones by reference, and in
// front the storage order.
enum Order { rowMajor = 101, columnMajor = 102 };

template <class A>
using InC = std::conditional_t<std::is_same_v<A, char>, int,
                               std::conditional_t<std::is_class_v<A>, const A*, A>>;

inline char letterOf(int cblas) {
    switch (cblas) {
        case 111:
            return 'N';
        case 112:
            return 'T';
        case 113:
            return 'C';
        case 121:
            return 'U';
        case 122:
            return 'L';
        case 131:
            return 'N';
        case 132:
            return 'U';
        case 141:
            return 'L';
        case 142:
            return 'R';
        default:
            return '?';
    }
}

template <class A>
A fromC(InC<A> argument) {
    if constexpr (std::is_same_v<A, char>)
        return letterOf(argument);
    else if constexpr (std::is_class_v<A>)
        return *argument;
    else
        return argument;
}

template <class Entry, class Function = decltype(Entry::lumo())>
struct Cblas;

template <class Entry, class... A>
struct Cblas<Entry, lumoStatus (*)(A...)> {
    static void blas(int order, InC<A>... a) {
        static Symbol& symbol = symbolOf<Entry>("cblas_");
        Passage passage(symbol);
        if (order == rowMajor || order == columnMajor) {
            typename Entry::Routine routine{element(fromC<A>(a))...};
            if (order == rowMajor) Rules<typename Entry::Routine>::transpose(routine);
            if (passage.serve<Entry>(routine)) return;
        }
        symbol.cpu<void(int, InC<A>...)>()(order, a...);
    }
};

// LAPACKE's high-level functions: Lumo's arguments behind the storage order, and the info
// returned. Row-major calls go to the CPU library's LAPACKE, and so do NaN, which it looks for.
template <class Entry, class Function = decltype(Entry::lumo())>
struct Lapacke;

template <class Entry, class... A>
struct Lapacke<Entry, lumoStatus (*)(A...)> {
    template <class... Extra>
    static int lapack(int order, A... a, Extra... extra) {
        static Symbol& symbol = symbolOf<Entry>("LAPACKE_");
        Passage passage(symbol);
        const typename Entry::Routine routine{element(a)...};
        if (order == columnMajor && passage.serve<Entry>(routine)) {
            (Rules<typename Entry::Routine>::clear(routine, extra), ...);
            return 0;
        }
        if (auto* cpu = symbol.cpu<int(int, A..., Extra...)>()) return cpu(order, a..., extra...);
        std::fprintf(stderr, "lumo: %s is not for Lumo, and there is no other\n",
                     symbol.name().c_str());
        return workMemoryError;
    }

  private:
    static constexpr int workMemoryError = -1010;  // LAPACK_WORK_MEMORY_ERROR
};

// The entry of a symbol, inside a function.
#define LUMO_SERVED(symbol, Description, function)    \
    struct served_##symbol {                          \
        using Routine = Description;                  \
        static const char* name() { return #symbol; } \
        static auto lumo() { return &function; }      \
    }

// Exports a function under a C name, and notes the name for detach.cpp.
#define LUMO_EXPORT(symbol, ...)            \
    LUMO_EXPORT_ALIAS(symbol, __VA_ARGS__); \
    asm volatile(".pushsection lumo_exports, \"a\"\n\t.asciz \"" #symbol "\"\n\t.popsection")

}  // namespace lumo::dropin
