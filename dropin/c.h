// The functions of CBLAS and LAPACKE, made from the signature of Lumo's own: in front stands the
// storage order.
#pragma once

#include "dropin/names.h"

namespace lumo::dropin {

enum Order { rowMajor = 101, columnMajor = 102 };

// CBLAS: enumerations for letters, real scalars by value and complex ones by reference.
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

template <class Entry, class Its, class Function = decltype(Entry::lumo())>
struct Cblas;

template <class Entry, class Its, class... A>
struct Cblas<Entry, Its, lumoStatus (*)(A...)> {
    static void call(int order, InC<Callers<A, Its>>... a) {
        static Symbol& symbol = symbolOf<Entry, Its>("cblas_");
        Passage passage(symbol, LUMO_CALLER);
        if ((order == rowMajor || order == columnMajor) && (fits(a) && ...)) {
            typename Entry::Routine routine{element(narrowed<A>(fromC<Callers<A, Its>>(a)))...};
            if (order == rowMajor) Rules<typename Entry::Routine>::transpose(routine);
            if (passage.serve<Entry>(routine)) return;
        }
        passage.cpu<void(int, InC<Callers<A, Its>>...)>()(order, a...);
    }
};

// LAPACKE's high-level functions: Lumo's arguments behind the storage order, and the info returned.
// Matrices stored by rows are transposed and back, as LAPACKE does it. NaN, which it looks for, are
// the CPU library's. `Extra` are results that LAPACKE has behind Lumo's.
template <class Entry, class Its,
          class Extra = typename Rules<typename Entry::Routine>::ExtraOfLapacke,
          class Function = decltype(Entry::lumo())>
struct Lapacke;

template <class Entry, class Its, class... Extra, class... A>
struct Lapacke<Entry, Its, Arguments<Extra...>, lumoStatus (*)(A...)> {
    using Integer = typename Its::Integer;

    static Integer call(int order, Callers<A, Its>... a, Extra... extra) {
        static Symbol& symbol = symbolOf<Entry, Its>("LAPACKE_");
        Passage passage(symbol, LUMO_CALLER);
        if ((order == rowMajor || order == columnMajor) && (fits(a) && ...)) {
            const typename Entry::Routine routine{element(narrowed<A>(a))...};
            if (passage.serve<Entry>(routine, StandIns<Integer>(order == rowMajor))) {
                (Rules<typename Entry::Routine>::clear(routine, extra), ...);
                return 0;
            }
        }
        if (auto* cpu = passage.cpuIfAny<Integer(int, Callers<A, Its>..., Extra...)>())
            return cpu(order, a..., extra...);
        passage.complainOfNoCpu();
        return workMemoryError;
    }

  private:
    static constexpr int workMemoryError = -1010;  // LAPACK_WORK_MEMORY_ERROR
};

}  // namespace lumo::dropin
