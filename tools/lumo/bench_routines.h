// The routines that `lumo bench` measures.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace lumo {

// Median seconds of a call with an n x n problem.
struct Times {
    double lumo, cpu;
};

struct BenchRoutine {
    std::string name;  // as "sgemm"
    double flops;      // of a problem of order 1; n^3 as many for one of order n
    // Throws a std::runtime_error if a call fails.
    std::function<Times(int n)> measure;
};

const std::vector<BenchRoutine>& benchRoutines();

}  // namespace lumo
