#include "cpu_times.h"

#include <algorithm>
#include <cmath>
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

double measure(const MeasuredRoutine& routine, Shape shape) {
    const Progress progress("the CPU's " + routine.name + ", n = " + std::to_string(shape.n));
    const auto problem = routine.make(shape);
    void* const cpu = cpuRoutine(routine.name);
    std::vector<double> times;
    for (double spent = 0; times.size() < 3 || (spent < 0.5 && times.size() < 50);) {
        problem->restore();
        int info = 0;
        times.push_back(secondsOf([&] { info = problem->by(cpu); }));
        if (info) throw std::runtime_error("the CPU library's " + routine.name + " fails");
        spent += times.back();
        if (times.back() > 1) break;
    }
    return *std::min_element(times.begin(), times.end());
}

}  // namespace

std::vector<CpuTime> cpuTimes(const MeasuredRoutine& routine, const std::vector<Shape>& shapes) {
    std::vector<CpuTime> times;
    Shape last{};
    double seconds = 0;
    const auto estimate = [&](const Shape& s) {
        return seconds * std::pow(double(s.n) / last.n, exponent(routine));
    };
    const auto take = [&](const Shape& s) {
        seconds = measure(routine, s);
        last = s;
    };
    // The ladder begins at a size that is surely short.
    if (!shapes.empty() && shapes[0].n > 512) {
        const Shape first = shapes[0];
        for (int n = 512; n < first.n; n *= 2) {
            const Shape s = routine.shapeOf(n);
            const Shape step{s.m, s.n, first.k == 0 ? 0 : s.k};
            if (seconds > 0 && estimate(step) > longCall) break;
            take(step);
        }
    }
    for (const Shape& s : shapes) {
        const bool measured = last.n == 0 || estimate(s) <= longCall;
        if (measured) take(s);
        times.push_back({measured ? seconds : estimate(s), measured});
    }
    return times;
}

}  // namespace lumo
