// Fortran's functions, made from the signature of Lumo's own: every argument goes by reference.
#pragma once

#include "dropin/names.h"
#include "platform/cpu/fortran.h"

namespace lumo::dropin {

using cpu::Reference;

// The lengths of the strings, behind Fortran's arguments: one each. Functions without strings do
// not see them.
constexpr std::size_t one = 1;
constexpr std::size_t mostLetters = 4;

// What a call does not look at may be null.
template <class A>
A byValue(Reference<A> argument) {
    if constexpr (std::is_pointer_v<A>)
        return argument;
    else
        return argument ? *argument : A();
}

template <class Entry, class Its, class Function = decltype(Entry::lumo())>
struct BlasInFortran;

template <class Entry, class Its, class... A>
struct BlasInFortran<Entry, Its, lumoStatus (*)(A...)> {
    static void call(Reference<Callers<A, Its>>... a) {
        static Symbol& symbol = symbolOf<Entry, Its>("", "_");
        Passage passage(symbol, LUMO_CALLER);
        if ((fits(byValue<Callers<A, Its>>(a)) && ...) &&
            passage.serve<Entry>({element(narrowed<A>(byValue<Callers<A, Its>>(a)))...}))
            return;
        passage.cpu<void(Reference<Callers<A, Its>>..., std::size_t, std::size_t, std::size_t,
                         std::size_t)>()(a..., one, one, one, one);
    }
};

// `Workspace` stands before info. A call is served if that is long enough, whose first elements
// become the lengths that the CPU library would have liked.
template <class Entry, class Its,
          class Workspace =
              typename Rules<typename Entry::Routine>::template Workspace<typename Its::Integer>,
          class Function = decltype(Entry::lumo())>
struct LapackInFortran;

template <class Entry, class Its, class... Extra, class... A>
struct LapackInFortran<Entry, Its, Arguments<Extra...>, lumoStatus (*)(A...)> {
    using Integer = typename Its::Integer;
    using Cpu = void(Reference<Callers<A, Its>>..., Extra..., Integer*, std::size_t, std::size_t,
                     std::size_t, std::size_t);

    static void call(Reference<Callers<A, Its>>... a, Extra... extra, Integer* info) {
        static Symbol& symbol = symbolOf<Entry, Its>("", "_");
        Passage passage(symbol, LUMO_CALLER);
        if ((fits(byValue<Callers<A, Its>>(a)) && ...)) {
            const Routine routine{element(narrowed<A>(byValue<Callers<A, Its>>(a)))...};
            if (enough(routine, extra...) && passage.serve<Entry, Integer>(routine)) {
                *info = 0;
                if constexpr (sizeof...(Extra) > 0) tellBest(passage.cpu<Cpu>(), a..., extra...);
                return;
            }
        }
        passage.cpu<Cpu>()(a..., extra..., info, one, one, one, one);
    }

  private:
    using Routine = typename Entry::Routine;
    // Of workspaces whose length is not told, LAPACK's documentation tells it. A query is too
    // short.
    static bool enough(Routine routine, Extra... extra) {
        if constexpr ((std::is_same_v<Extra, const Integer*> || ...)) {
            if (!servable(routine)) return false;
            const Lengths least = Rules<Routine>::leastWork(routine);
            const std::int64_t* next = least.inOrder;
            return (reaches(extra, next) && ...);
        }
        return true;
    }
    static bool reaches(const Integer* length, const std::int64_t*& least) {
        return *length >= *least++;
    }
    template <class T>
    static bool reaches(T*, const std::int64_t*&) {
        return true;
    }
    template <class T, class Second, class... Rest>
    static void tellBest(Cpu* cpu, Reference<Callers<A, Its>>... a, T* work, Second*,
                         Rest... rest) {
        if constexpr (std::is_same_v<Second, const Integer>) {
            const Integer query = -1;
            Integer info = 0;
            cpu(a..., work, &query, rest..., &info, one, one, one, one);
        }
    }
};

// dsgesv and zcgesv, where the workspaces stand before iter.
template <class Entry, class Its,
          class Workspace =
              typename Rules<typename Entry::Routine>::template Workspace<typename Its::Integer>>
struct MixedInFortran;

template <class Entry, class Its, class... Extra>
struct MixedInFortran<Entry, Its, Arguments<Extra...>> {
    using Routine = typename Entry::Routine;
    using T = typename Routine::Element;
    using Integer = typename Its::Integer;

    static void call(const Integer* n, const Integer* nrhs, T* a, const Integer* lda, Integer* ipiv,
                     const T* b, const Integer* ldb, T* x, const Integer* ldx, Extra... extra,
                     Integer* iter, Integer* info) {
        static Symbol& symbol = symbolOf<Entry, Its>("", "_");
        Passage passage(symbol, LUMO_CALLER);
        if (fits(*n) && fits(*nrhs) && fits(*lda) && fits(*ldb) && fits(*ldx) &&
            passage.serve<Entry, Integer>(Routine{int(*n), int(*nrhs), a, int(*lda),
                                                  narrowed<int*>(ipiv), b, int(*ldb), x, int(*ldx),
                                                  narrowed<int*>(iter)})) {
            *info = 0;
            return;
        }
        passage.cpu<decltype(call)>()(n, nrhs, a, lda, ipiv, b, ldb, x, ldx, extra..., iter, info);
    }
};

}  // namespace lumo::dropin
