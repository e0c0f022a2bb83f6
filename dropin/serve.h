// How a call is served.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <new>
#include <vector>

#include "dropin/data.h"
#include "dropin/detach.h"
#include "dropin/device.h"
#include "dropin/stand_ins.h"
#include "dropin/symbol.h"
#include "routine/c_interface.h"
#include "routine/description.h"

namespace lumo::dropin {

// What a call writes to: kept for the CPU library, which must find it as it was, and marked so that
// a result that never arrived shows. Lumo brings operands back from the device also when it fails
// half-way, and when bringing back fails it does not tell.
class Results {
  public:
    template <class P>
    void add(const MatrixOperand<P>& o) {
        add(o.pointer, o.rows, o.columns, o.ld ? *o.ld : o.rows, o.access, o.triangle);
    }
    template <class P>
    void add(const VectorOperand<P>& o) {
        add(o.pointer, 1, o.length, std::abs(o.increment), o.access, false);
    }

    bool arrived() const {
        return std::all_of(marks_.begin(), marks_.end(), std::mem_fn(&Mark::isGone)) &&
               std::all_of(parts_.begin(), parts_.end(), std::mem_fn(&Part::hasArrived));
    }
    void restore() {
        for (Part& part : parts_) part.restore();
    }

  private:
    // A result that is only written has its last element given a value that no result has; another
    // one, or the rest of a triangle's square, is kept. That something read did not change is taken
    // for a failure: where it is none, the CPU library comes to the same result.
    template <class T>
    void add(T* a, int m, int n, int lda, Access access, bool triangle) {
        const bool out = access == Access::out, inOut = access == Access::inOut;
        if (m == 0 || n == 0) return;
        if (inOut || access == Access::scratch || (out && triangle)) {
            const std::size_t bytes = std::size_t(m) * sizeof(T);
            std::vector<char> copy(bytes * std::size_t(n));
            parts_.push_back({reinterpret_cast<char*>(a), std::size_t(lda) * sizeof(T), bytes,
                              std::size_t(n), std::move(copy), inOut});
            parts_.back().keep();
        }
        if (!out) return;
        marks_.push_back(
            {reinterpret_cast<char*>(a + std::ptrdiff_t(n - 1) * lda + (m - 1)), sizeof(T)});
        marks_.back().set();
    }
    template <class T>
    void add(const T*, int, int, int, Access, bool) {}

    struct Part {
        char* memory;
        std::size_t stride, bytes, columns;
        std::vector<char> copy;
        bool mustChange;

        char* column(std::size_t j) const { return memory + j * stride; }
        void keep() {
            for (std::size_t j = 0; j < columns; ++j)
                std::memcpy(copy.data() + j * bytes, column(j), bytes);
        }
        void restore() {
            for (std::size_t j = 0; j < columns; ++j)
                std::memcpy(column(j), copy.data() + j * bytes, bytes);
        }
        bool hasArrived() const {
            for (std::size_t j = 0; j < columns; ++j)
                if (std::memcmp(column(j), copy.data() + j * bytes, bytes) != 0) return true;
            return !mustChange;
        }
    };
    // Bytes of 0xff: a NaN that no operation makes, and no pivot.
    struct Mark {
        char* element;
        std::size_t bytes;

        void set() { std::memset(element, 0xff, bytes); }
        bool isGone() const {
            return std::any_of(element, element + bytes, [](char byte) { return byte != '\xff'; });
        }
    };
    std::vector<Part> parts_;
    std::vector<Mark> marks_;
};

// What this library knows of a routine beside its description (routine/description.h): size(r),
// which crossover.h explains, and where it is not the usual, whether a call that has something to
// do is worth Lumo's while, whether LAPACK treats these data better, and the arguments that other
// interfaces have beside Lumo's: Fortran's workspaces, of which leastWork(r) tells the lengths, and
// results of LAPACKE's, which clear(r, result) fills.
template <class Routine>
struct Rules;
template <class...>
struct Arguments {};
// The least lengths of workspaces, in the order of the arguments.
struct Lengths {
    std::int64_t inOrder[3];
    Lengths(std::int64_t work, std::int64_t second = 0, std::int64_t third = 0)
        : inOrder{work, second, third} {}
};
struct UsualRules {
    template <class Integer>
    using Workspace = Arguments<>;
    using ExtraOfLapacke = Arguments<>;

    template <class Routine>
    static bool worthwhile(const Routine&) {
        return true;
    }
    template <class Routine>
    static bool dataSuit(const Routine&) {
        return true;
    }
};

// Whether the arguments are right, and there is something to do.
template <class Routine>
bool servable(Routine& routine) {
    return routine.badArgument() == 0 && !routine.empty() && Rules<Routine>::worthwhile(routine);
}

// Any status but success leaves the call to the CPU library. So it does with data at fault, a
// singular matrix say: the info is then LAPACK's own, and a device that failed half-way is not
// taken for one. Once for all the names of a routine, and not a part of each.
template <class Entry, class Integer>
[[gnu::noinline]] bool Passage::serve(typename Entry::Routine routine, StandIns<Integer> standIns) {
    using Its = Rules<typename Entry::Routine>;
    try {
        if (!standIns.layOut(routine) || !servable(routine)) return false;
        if (!symbol_.reached(Its::size(routine)) || !detach() || !threadIsReady()) return false;
        if (!standIns.take(routine) || !Its::dataSuit(routine)) return false;
        Results results;
        routine.operands([&](auto... operands) { (results.add(operands), ...); });
        const lumoStatus status = routine.arguments(
            [](auto... arguments) { return Entry::lumo()(external(arguments)...); });
        served_ = status == lumoNoError && results.arrived();
        if (served_)
            standIns.giveBack();
        else
            results.restore();
    } catch (const std::bad_alloc&) {  // no memory for copies of operands: nothing has happened
    }
    return served_;
}

}  // namespace lumo::dropin
