// What a call would take on a described machine.
#pragma once

#include <string>
#include <vector>

#include "common/routines.h"
#include "platform/timeline/control.h"

namespace lumo {

// One size: the account of a call like the one before it, or why the call fails there.
struct Prediction {
    int n;
    timeline::Account account;
    std::string failure;  // empty if it does not

    double gpuSeconds() const;
};

struct PredictedRoutine {
    std::string name;
    double flops;  // n^3 as many with a problem of order n; 0 if nobody counts them
    std::vector<Prediction> sizes;
    std::vector<double> cpu;     // seconds of the CPU library, if wanted
    std::vector<bool> measured;  // or extrapolated

    // The speed at a size, in TFlop/s.
    double speed(std::size_t k, double seconds) const {
        const double n = sizes[k].n;
        return flops * n * n * n / seconds / 1e12;
    }
    // From which size on the machine is faster, as far as it was asked: 0 if it is not.
    double crossover() const;
};

// The library on the machine, from here to the end of the object's life.
class PlannedMachine {
  public:
    explicit PlannedMachine(const timeline::Machine& machine);
    ~PlannedMachine();
    PlannedMachine(const PlannedMachine&) = delete;
    PlannedMachine& operator=(const PlannedMachine&) = delete;

    Prediction predict(const MeasuredRoutine& routine, Shape shape, bool device) const;

  private:
    const timeline::Machine machine_;
};

}  // namespace lumo
