// The functions behind the exported symbols, made from the signature of Lumo's own functions: the
// Fortran, CBLAS and LAPACKE interfaces differ from it, and from each other, by rule.
//
// `Routine` is an aggregate of Lumo's arguments in their order; see serve.h for its members.
#pragma once

#include <cstdio>
#include <utility>

#include "dropin/serve.h"
#include "runtime/letters.h"

namespace lumo::dropin {

template <class T>
std::string routineName(const char* family) {
    return Element<T>::letter + std::string(family);
}

// Fortran passes everything by reference, and behind the arguments the lengths of the strings: one
// each. Functions without strings do not see them.
template <class A>
using ByReference = std::conditional_t<std::is_pointer_v<A>, A, const A*>;
constexpr std::size_t one = 1;
constexpr std::size_t mostLetters = 4;

template <class A>
A byValue(ByReference<A> argument) {
    if constexpr (std::is_pointer_v<A>)
        return argument;
    else if constexpr (std::is_same_v<A, char>)
        return upper(*argument);
    else
        return *argument;
}

template <class Routine>
Symbol& fortranSymbol() {
    static const std::string routine = routineName<typename Routine::Type>(Routine::name);
    static auto& symbol = *new Symbol(routine, routine + "_");
    return symbol;
}

template <class Routine, class Function>
struct Fortran;

template <class Routine, class... A>
struct Fortran<Routine, lumoStatus (*)(A...)> {
    static void blas(ByReference<A>... a) {
        Symbol& symbol = fortranSymbol<Routine>();
        Passage passage(symbol);
        if (passage.serve(Routine{byValue<A>(a)...})) return;
        symbol.cpu<void(ByReference<A>..., std::size_t, std::size_t, std::size_t, std::size_t)>()(
            a..., one, one, one, one);
    }

    // Extra: what stands before info, such as a workspace. Served if that is as it should be, and
    // the length of the workspace no query; its first element becomes the length that the CPU
    // library would have liked.
    template <class... Extra>
    static void lapack(ByReference<A>... a, Extra... extra, int* info) {
        using Cpu = void(ByReference<A>..., Extra..., int*, std::size_t, std::size_t, std::size_t,
                         std::size_t);
        Symbol& symbol = fortranSymbol<Routine>();
        Cpu* const cpu = symbol.template cpu<Cpu>();
        Passage passage(symbol);
        const Routine routine{byValue<A>(a)...};
        if (enough(routine, extra...) && passage.serve(routine)) {
            *info = 0;
            if constexpr (sizeof...(Extra) > 0) tellBest(cpu, a..., extra...);
            return;
        }
        cpu(a..., extra..., info, one, one, one, one);
    }

  private:
    static bool enough(const Routine&) { return true; }
    template <class T, class... Rest>
    static bool enough(const Routine& routine, T*, const int* lwork, Rest...) {
        return routine.servable() && *lwork >= routine.leastWork();
    }
    template <class Cpu, class T, class... Rest>
    static void tellBest(Cpu* cpu, ByReference<A>... a, T* work, const int*, Rest... rest) {
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

template <class Routine, class Function>
struct Cblas;

template <class Routine, class... A>
struct Cblas<Routine, lumoStatus (*)(A...)> {
    static void blas(int order, InC<A>... a) {
        static const std::string name = routineName<typename Routine::Type>(Routine::name);
        static auto& symbol = *new Symbol(name, "cblas_" + name);
        Passage passage(symbol);
        if (order == rowMajor || order == columnMajor) {
            Routine routine{fromC<A>(a)...};
            if (order == rowMajor) routine.transpose();
            if (passage.serve(routine)) return;
        }
        symbol.template cpu<void(int, InC<A>...)>()(order, a...);
    }
};

// LAPACKE's high-level functions: Lumo's arguments behind the storage order, and the info
// returned. Row-major calls go to the CPU library's LAPACKE, and so do NaN, which it looks for.
template <class Routine, class Function>
struct Lapacke;

template <class Routine, class... A>
struct Lapacke<Routine, lumoStatus (*)(A...)> {
    template <class... Extra>
    static int lapack(int order, A... a, Extra... extra) {
        static const std::string name = routineName<typename Routine::Type>(Routine::name);
        static auto& symbol = *new Symbol(name, "LAPACKE_" + name);
        Passage passage(symbol);
        const Routine routine{byLetter(a)...};
        if (order == columnMajor && passage.serve(routine)) {
            (routine.clear(extra), ...);
            return 0;
        }
        if (auto* cpu = symbol.template cpu<int(int, A..., Extra...)>())
            return cpu(order, a..., extra...);
        std::fprintf(stderr, "lumo: %s is not for Lumo, and there is no other\n",
                     symbol.name().c_str());
        return workMemoryError;
    }

  private:
    static constexpr int workMemoryError = -1010;  // LAPACK_WORK_MEMORY_ERROR
    template <class B>
    static B byLetter(B argument) {
        return argument;
    }
    static char byLetter(char argument) { return upper(argument); }
};

// Gives a function a C name, and notes the name for detach.cpp. An alias rather than a function
// that forwards: the list of symbols needs no second list of arguments. To be used inside a
// function, which need not be called.
#define LUMO_EXPORT(symbol, ...)                                                       \
    asm volatile(".globl " #symbol "\n\t.type " #symbol ", @function\n\t.set " #symbol \
                 ", %c0\n\t.pushsection lumo_exports, \"a\"\n\t.asciz \"" #symbol      \
                 "\"\n\t.popsection" ::"i"(&__VA_ARGS__))

}  // namespace lumo::dropin
