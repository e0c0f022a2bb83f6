// How long the CPU library takes.
#pragma once

#include <vector>

#include "common/routines.h"

namespace lumo {

struct CpuTime {
    double seconds;
    bool measured;  // or extrapolated
};

// Of problems of these shapes, by rising sizes. Sizes that take too long are extrapolated.
std::vector<CpuTime> cpuTimes(const MeasuredRoutine& routine, const std::vector<Shape>& shapes);

}  // namespace lumo
