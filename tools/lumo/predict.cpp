// `lumo predict`: what a routine would take on a machine that is described.
#include <algorithm>
#include <cstdio>

#include "choice.h"
#include "commands.h"
#include "common/progress.h"
#include "cpu_times.h"
#include "gnuplot.h"
#include "platform/timeline/machines.h"
#include "prediction_text.h"

namespace lumo {
namespace {

// LAPACK's counts for values alone; 0 for routines that have none.
double valuesFlops(const MeasuredRoutine& routine) {
    const std::string name = routine.name.substr(1);
    return name == "gesvd" ? 8. / 3 : name == "syevd" || name == "heevd" ? 4. / 3 : 0;
}

PredictedRoutine predictRoutine(const PlannedMachine& machine, const MeasuredRoutine& routine,
                                const PredictOptions& options) {
    PredictedRoutine result{routine.name, routine.flops, {}, {}, {}};
    if (options.values)
        result.flops =
            valuesFlops(routine) * (routine.name[0] == 'c' || routine.name[0] == 'z' ? 4 : 1);
    std::vector<Shape> shapes;
    for (const int n : options.sizes) {
        shapes.push_back(routine.shapeOf(n));
        if (options.values) shapes.back().k = 0;
        const Progress progress("predicting " + routine.name + ", n = " + std::to_string(n));
        result.sizes.push_back(machine.predict(routine, shapes.back(), options.device));
    }
    if (options.against == "cpu")
        for (const CpuTime& time : cpuTimes(routine, shapes)) {
            result.cpu.push_back(time.seconds);
            result.measured.push_back(time.measured);
        }
    return result;
}

}  // namespace

void predict(const PredictOptions& asked) {
    PredictOptions options = asked;
    std::sort(options.sizes.begin(), options.sizes.end());
    options.sizes.erase(std::unique(options.sizes.begin(), options.sizes.end()),
                        options.sizes.end());
    const auto routines = choose(allRoutines(), options.routines);
    if (options.values && !std::all_of(routines.begin(), routines.end(), valuesFlops))
        throw std::runtime_error("--values is for gesvd, syevd and heevd alone");
    if (!options.against.empty())
        for (const MeasuredRoutine& routine : routines) measuredRoutine(routine.name);
    const timeline::Machine machine = timeline::machineOf(options.machine);
    const auto table = openOutput(options.json), picture = openOutput(options.plot);
    if (picture) checkPlot(options.plot);

    const PlannedMachine planned(machine);
    const PredictionTitle title{machine.name + " (" + machine.file + ")", options.device};
    printHeading(title, !options.against.empty());
    std::vector<PredictedRoutine> predicted;
    for (const MeasuredRoutine& routine : routines) {
        predicted.push_back(predictRoutine(planned, routine, options));
        print(predicted.back());
        std::fflush(stdout);
    }
    if (table) {
        table->stream() << json(title, predicted);
        deliver(*table);
    }
    if (picture) {
        plot(*picture, title, predicted);
        deliver(*picture);
    }
}

}  // namespace lumo
