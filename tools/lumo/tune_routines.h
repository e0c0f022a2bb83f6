// The routines that `lumo tune` measures: those that the drop-in library serves.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumo {

struct TuneRoutine {
    std::string name;  // as "sgemm"
    // Median seconds of a call with a problem of order n, by each of two libraries' routines of
    // Fortran's interface.
    std::function<std::pair<double, double>(void* one, void* other, int n)> measure;
};

const std::vector<TuneRoutine>& tuneRoutines();

}  // namespace lumo
