// `lumo bench`: Lumo's speed beside the CPU library's, by size.
#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "bench_plot.h"
#include "choice.h"
#include "commands.h"
#include "common/busy_loops.h"
#include "common/measure.h"
#include "common/progress.h"
#include "common/routines.h"
#include "gnuplot.h"
#include "json.h"
#include "output_file.h"
#include "session.h"

namespace lumo {
namespace {

// A ladder ends where a call takes longer.
constexpr double longCall = 1;

// Median seconds of a call of order n.
std::pair<double, double> timesOf(const MeasuredRoutine& routine, int n) {
    const auto problem = routine.makeSquare(n);
    void* const cpu = cpuRoutine(routine.name);
    const auto failure = [&](const std::string& who, const std::string& what) {
        return std::runtime_error(who + "'s " + routine.name + " fails, n = " + std::to_string(n) +
                                  ": " + what);
    };
    return pairedMedians(
        5, 0.5, [&] { problem->restore(); },
        [&] {
            if (const int status = problem->lumo())
                throw failure("Lumo", describe(lumoStatus(status), lumoGetThreadErrorInfo()));
        },
        [&] {
            if (const int info = problem->by(cpu))
                throw failure("the CPU library", "info " + std::to_string(info));
        });
}

SpeedCurve measure(const MeasuredRoutine& routine, const std::string& place, int largest) {
    SpeedCurve curve{routine.name, {}, {}, {}};
    std::vector<int> sizes;
    for (int n = 64; n < largest; n *= 2) sizes.push_back(n);
    sizes.push_back(largest);
    for (const int n : sizes) {
        const auto [lumo, cpu] = [&] {
            const Progress progress(place + routine.name + ", n = " + std::to_string(n));
            return timesOf(routine, n);
        }();
        const double work = routine.flops * n * n * n / 1e9;
        curve.n.push_back(n);
        curve.lumo.push_back(work / lumo);
        curve.cpu.push_back(work / cpu);
        std::printf("%-8s %6d %11.3f %11.3f %10.2f %10.2f %8.2f\n", routine.name.c_str(), n,
                    1e3 * lumo, 1e3 * cpu, curve.lumo.back(), curve.cpu.back(), lumo / cpu);
        std::fflush(stdout);
        if (std::max(lumo, cpu) > longCall) break;
    }
    if (const double crossover = curve.crossover(); crossover > 0)
        std::printf("%-8s Lumo is faster from n = %.0f on\n", "", crossover);
    else
        std::printf("%-8s no crossover up to n = %d\n", "", curve.n.back());
    return curve;
}

std::vector<MeasuredRoutine> routinesWithFlops() {
    std::vector<MeasuredRoutine> routines;
    for (const MeasuredRoutine& routine : measuredRoutines())
        if (routine.flops > 0) routines.push_back(routine);
    return routines;
}

std::string json(const std::string& device, const std::vector<SpeedCurve>& curves) {
    char line[200];
    std::string text = "{\n  \"version\": " + quoted(LUMO_VERSION) +
                       ",\n  \"device\": " + quoted(device) + ",\n  \"routines\": [";
    for (const SpeedCurve& c : curves) {
        text += (&c == curves.data() ? "\n" : ",\n");
        const double crossover = c.crossover();
        std::snprintf(line, sizeof line, crossover > 0 ? "%.0f" : "null", crossover);
        text += "    {\"name\": " + quoted(c.name) + ", \"crossover\": " + line + ", \"sizes\": [";
        for (std::size_t k = 0; k < c.n.size(); ++k) {
            std::snprintf(line, sizeof line,
                          "%s\n      {\"n\": %d, \"lumo_gflops\": %.5g, \"cpu_gflops\": %.5g}",
                          k ? "," : "", c.n[k], c.lumo[k], c.cpu[k]);
            text += line;
        }
        text += "]}";
    }
    return text + "\n  ]\n}\n";
}

}  // namespace

void bench(const BenchOptions& options) {
    const auto routines = choose(routinesWithFlops(), options.routines);
    const auto table = openOutput(options.json), picture = openOutput(options.plot);
    if (picture) checkPlot(options.plot);
    const BusyLoops load(options.load);  // before there are threads
    const Session session;
    const std::string device = session.device();
    if (options.load > 0) std::printf("load: %d busy loops\n", options.load);
    std::printf("device: %s\n\n%-8s %6s %11s %11s %10s %10s %8s\n", device.c_str(), "routine", "n",
                "Lumo ms", "CPU ms", "Lumo", "CPU", "Lumo ms");
    std::printf("%-8s %6s %11s %11s %10s %10s %8s\n", "", "", "", "", "Gflop/s", "Gflop/s",
                "/ CPU ms");
    std::vector<SpeedCurve> curves;
    curves.reserve(routines.size());
    for (const MeasuredRoutine& routine : routines)
        curves.push_back(measure(
            routine,
            std::to_string(curves.size() + 1) + " of " + std::to_string(routines.size()) + ": ",
            options.largest));
    if (table) {
        table->stream() << json(device, curves);
        deliver(*table);
    }
    if (picture) {
        plotSpeeds(*picture, "lumo bench: " + device, curves);
        deliver(*picture);
    }
}

}  // namespace lumo
