// How a call is served.
#pragma once

#include <new>
#include <vector>

#include "dropin/detach.h"
#include "dropin/device.h"
#include "dropin/element.h"
#include "dropin/symbol.h"

namespace lumo::dropin {

// Copies of the operands that a call overwrites. Lumo brings them back from the device also when
// it fails half-way, and the CPU library must find them as they were.
class Snapshot {
  public:
    template <class T>
    void operator()(T* a, int m, int n, int lda) {
        const std::size_t bytes = std::size_t(m) * sizeof(T);
        std::vector<char> copy(bytes * std::size_t(n));
        parts_.push_back({reinterpret_cast<char*>(a), std::size_t(lda) * sizeof(T), bytes,
                          std::size_t(n), std::move(copy)});
        parts_.back().exchange(true);
    }
    void restore() {
        for (Part& part : parts_) part.exchange(false);
    }

  private:
    struct Part {
        char* memory;
        std::size_t stride, bytes, columns;
        std::vector<char> copy;

        void exchange(bool keep) {
            for (std::size_t j = 0; j < columns; ++j) {
                char *there = memory + j * stride, *here = copy.data() + j * bytes;
                std::memcpy(keep ? here : there, keep ? there : here, bytes);
            }
        }
    };
    std::vector<Part> parts_;
};

// Unless a routine says otherwise, it takes data as they are and knows no failure of theirs.
template <class Routine>
bool dataSuit(const Routine&) {
    return true;
}
template <class Routine>
int infoOfFailure(const Routine&) {
    return 0;
}

// A routine has these members:
//   servable()       the arguments are right, and there is something to do
//   size()           see crossover.h
//   run()            Lumo's function
//   overwritten(f)   calls f(matrix, m, n, ld) for the operands whose old values count
// and functions beside it, where the above do not fit: dataSuit, whether LAPACK would treat the
// data no better, and infoOfFailure, the positive info that goes with status 8. Info is computed
// from the data since the word that Lumo keeps it in is shared by all threads.
template <class Routine>
std::optional<int> Passage::serve(const Routine& routine) {
    if (!routine.servable() || !symbol_.reached(routine.size())) return {};
    if (!detach() || !threadIsReady() || !dataSuit(routine)) return {};
    try {
        Snapshot snapshot;
        routine.overwritten(snapshot);
        const lumoStatus status = routine.run();
        const int info = status == lumoDataError ? infoOfFailure(routine) : 0;
        if (status == lumoNoError || info > 0) {
            served_ = true;
            return info;
        }
        snapshot.restore();
    } catch (const std::bad_alloc&) {  // no memory for the snapshot: nothing has happened yet
    }
    return {};
}

}  // namespace lumo::dropin
