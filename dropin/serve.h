// How a call is served.
#pragma once

#include <algorithm>
#include <functional>
#include <new>
#include <vector>

#include "dropin/detach.h"
#include "dropin/device.h"
#include "dropin/element.h"
#include "dropin/symbol.h"

namespace lumo::dropin {

// What a call writes to: kept for the CPU library, which must find it as it was, and marked so that
// a result that never arrived shows. Lumo brings operands back from the device also when it fails
// half-way, and when bringing back fails it does not tell.
class Results {
  public:
    // An operand that is read and overwritten. If it `mustChange`, that it did not is taken for a
    // failure: where it is none, the CPU library comes to the same result.
    template <class T>
    void overwrites(T* a, int m, int n, int lda, bool mustChange = true) {
        const std::size_t bytes = std::size_t(m) * sizeof(T);
        std::vector<char> copy(bytes * std::size_t(n));
        parts_.push_back({reinterpret_cast<char*>(a), std::size_t(lda) * sizeof(T), bytes,
                          std::size_t(n), std::move(copy), mustChange});
        parts_.back().keep();
    }
    // One that is only written: its last element is given a value that no result has.
    template <class T>
    void writes(T* a, int m, int n, int lda) {
        marks_.push_back(
            {reinterpret_cast<char*>(a + std::ptrdiff_t(n - 1) * lda + (m - 1)), sizeof(T)});
        marks_.back().set();
    }

    // The triangle of a square matrix, which is read only if `reads`; the rest is kept.
    template <class T>
    void overwritesTriangle(T* c, int n, int ldc, bool reads) {
        overwrites(c, n, n, ldc, reads);
        if (!reads) writes(c, n, n, ldc);
    }

    bool arrived() const {
        return std::all_of(marks_.begin(), marks_.end(), std::mem_fn(&Mark::isGone)) &&
               std::all_of(parts_.begin(), parts_.end(), std::mem_fn(&Part::hasArrived));
    }
    void restore() {
        for (Part& part : parts_) part.restore();
    }

  private:
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

// Unless a routine says otherwise, it takes data as they are.
template <class Routine>
bool dataSuit(const Routine&) {
    return true;
}

// A routine has these members:
//   servable()       the arguments are right, and there is something to do
//   size()           see crossover.h
//   run()            Lumo's function
//   results(r)       tells r, a Results, what it writes to
// and a function dataSuit beside it where LAPACK treats some data better.
//
// Any status but success leaves the call to the CPU library. So it does with data at fault, a
// singular matrix say: the info is then LAPACK's own, and a device that failed half-way is not
// taken for one.
template <class Routine>
bool Passage::serve(const Routine& routine) {
    if (!routine.servable() || !symbol_.reached(routine.size())) return false;
    if (!detach() || !threadIsReady() || !dataSuit(routine)) return false;
    try {
        Results results;
        routine.results(results);
        served_ = routine.run() == lumoNoError && results.arrived();
        if (!served_) results.restore();
    } catch (const std::bad_alloc&) {  // no memory to keep the operands in: nothing has happened
    }
    return served_;
}

}  // namespace lumo::dropin
