#include "cpu_times.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "common/measure.h"
#include "common/progress.h"

namespace lumo {
namespace {

// A call that would take longer is not made.
constexpr double longCall = 4;

// Of routines without a count of operations, whose work grows with the matrix.
double exponent(const MeasuredRoutine& routine) {
    return routine.name.substr(1) == "gemv" ? 2 : 3;
}

// The drop-in library would pass the call to Lumo, which computes nothing in this process.
void* realRoutine(const std::string& name) {
    void* const routine = cpuRoutine(name);
    Dl_info provider;
    if (dladdr(routine, &provider) && provider.dli_fname &&
        std::strstr(provider.dli_fname, "liblumo-lapack"))
        throw std::runtime_error(name + " is the drop-in library's: run lumo predict without it");
    return routine;
}

double measure(const MeasuredRoutine& routine, Shape shape) {
    const Progress progress("the CPU's " + routine.name + ", n = " + std::to_string(shape.n));
    const auto problem = routine.make(shape);
    void* const cpu = realRoutine(routine.name);
    std::vector<double> times;
    for (double spent = 0; times.size() < 3 || (spent < 0.5 && times.size() < 50);) {
        problem->restore();
        int info = 0;
        times.push_back(secondsOf([&] { info = problem->by(cpu); }));
        if (info) throw std::runtime_error("the CPU library's " + routine.name + " fails");
        spent += times.back();
        if (spent > 2 * longCall) break;
    }
    return *std::min_element(times.begin(), times.end());
}

}  // namespace

std::vector<CpuTime> cpuTimes(const MeasuredRoutine& routine, const std::vector<Shape>& shapes) {
    std::vector<CpuTime> times;
    // What was measured last, and before: the faster one is extrapolated, for what else runs on a
    // machine may have met one of them.
    std::array<std::pair<int, double>, 2> last{};
    const auto estimate = [&](int n) {
        double least = 0;
        for (const auto& [size, seconds] : last) {
            if (size == 0) continue;
            const double then = seconds * std::pow(double(n) / size, exponent(routine));
            least = least > 0 ? std::min(least, then) : then;
        }
        return least;
    };
    const auto take = [&](const Shape& s) {
        last = {std::pair(s.n, measure(routine, s)), last[0]};
    };
    // The ladder begins at a size that is surely short.
    if (!shapes.empty())
        for (int n = 512; n < shapes[0].n && estimate(n) <= longCall; n *= 2) {
            Shape step = routine.shapeOf(n);
            if (shapes[0].k == 0) step.k = 0;
            take(step);
        }
    for (const Shape& s : shapes) {
        const bool measured = estimate(s.n) <= longCall;
        if (measured) take(s);
        times.push_back({measured ? last[0].second : estimate(s.n), measured});
    }
    return times;
}

}  // namespace lumo
