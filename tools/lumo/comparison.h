// What decompositions have in common: whether they are right, and how fast.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "common/residual.h"
#include "linear_system.h"

namespace lumo {

inline double ratio(double part, double whole) {
    return whole == 0 ? 0 : part / whole;
}

// How much of a matrix's norm rounding errors may be. A backward stable decomposition's grow like
// the square root of the size or less.
template <class T>
double toleranceFor(int size) {
    return errorBound * epsOf<T> * std::sqrt(size);
}

[[noreturn]] inline void throwInaccurate(const std::string& file, const std::string& what) {
    throw std::runtime_error(file + ": the decomposition is not accurate: " + what +
                             "; do the data need scaling?");
}

// The values' norm, which is A's.
inline void checkNorm(double norm, double ofValues, const char* values, double tolerance,
                      const std::string& file) {
    const double apart = ratio(std::abs(norm - ofValues), norm);
    std::printf("norm:       %.6g, and ||%s|| is that but for %.1e of it\n", norm, values, apart);
    if (!(apart <= tolerance))
        throwInaccurate(file, "||" + std::string(values) + "|| is not ||A||");
}

// Times the library and the CPU LAPACK in turn. ours() and theirs() return seconds.
template <class Ours, class Theirs>
void compareTimes(Ours ours, Theirs theirs) {
    constexpr int runs = 3;
    std::array<double, runs> lumo{}, cpu{};
    for (int run = 0; run < runs; ++run) {
        lumo[run] = ours();
        cpu[run] = theirs();
    }
    std::sort(lumo.begin(), lumo.end());
    std::sort(cpu.begin(), cpu.end());
    std::printf("compared:   Lumo %.4f s, CPU LAPACK %.4f s: %.2f times its time (medians of %d)\n",
                lumo[runs / 2], cpu[runs / 2], lumo[runs / 2] / cpu[runs / 2], runs);
}

// The seconds that the library takes; those that the CPU LAPACK does, decompose() returning its
// info.
template <class Decompose>
double secondsOf(Decompose decompose) {
    const Outcome outcome = timed(decompose, "decomposing");
    succeed(outcome.status);
    return outcome.seconds;
}
template <class Decompose>
double secondsOfCpu(Decompose decompose) {
    int info = 0;
    const auto call = [&] {
        info = decompose();
        return lumoNoError;
    };
    const double seconds = timed(call, "decomposing, CPU LAPACK").seconds;
    if (info) throw std::runtime_error("the CPU LAPACK fails with " + std::to_string(info));
    return seconds;
}

}  // namespace lumo
