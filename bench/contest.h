// A call of Lumo's against the same call of a CPU library: on the same data, in turn in one run, so
// that a change of the machine's pace meets both. Medians, and their ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/busy_loops.h"
#include "common/measure.h"
#include "common/routines.h"
#include "lumo.h"

namespace bench {

using lumo::median;
using lumo::randomElements;

// Measures Lumo alone (--lumo_only), for a profile of its calls.
inline bool lumoOnly = false;

// A problem by Lumo and by another library; each returns 0 on success. `rival` names the other in
// the output.
struct Contest {
    std::string name;
    std::function<std::unique_ptr<lumo::Problem>()> make;
    std::function<int(lumo::Problem&)> other;
    std::string rival = "cpu";
};

inline void run(benchmark::State& state, const Contest& contest) {
    const auto problem = contest.make();
    auto seconds = [&](const std::function<int(lumo::Problem&)>& call) {
        problem->restore();
        int failed = 0;
        const double elapsed = lumo::secondsOf([&] { failed = call(*problem); });
        if (failed) state.SkipWithError("a call failed");
        return elapsed;
    };
    const auto byLumo = [](lumo::Problem& p) { return p.lumo(); };
    seconds(byLumo);
    if (!lumoOnly) seconds(contest.other);
    std::vector<double> lumoTimes, otherTimes;
    for (auto _ : state) {
        lumoTimes.push_back(seconds(byLumo));
        if (!lumoOnly) otherTimes.push_back(seconds(contest.other));
        state.SetIterationTime(lumoTimes.back());
    }
    if (lumoTimes.empty()) return;
    state.counters["lumo_ms"] = 1e3 * median(lumoTimes);
    if (lumoOnly) return;
    state.counters[contest.rival + "_ms"] = 1e3 * median(otherTimes);
    state.counters["ratio"] = median(lumoTimes) / median(otherTimes);
}

inline void add(const Contest& contest, int repetitions) {
#ifdef __clang_analyzer__  // takes the benchmark, which its library keeps, for a leak
    (void)repetitions;
    (void)contest;
#else
    benchmark::RegisterBenchmark(contest.name.c_str(),
                                 [=](benchmark::State& state) { run(state, contest); })
        ->Iterations(repetitions)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
#endif
}

// A routine, as "sgels", against the CPU library's: as "lumoSgels/2000x1000x100".
inline void add(const std::string& routine, const std::string& shape, lumo::Shape s,
                int repetitions) {
    const lumo::MeasuredRoutine& measured = lumo::measuredRoutine(routine);
    void* const cpu = lumo::cpuRoutine(routine);
    const std::string name =
        "lumo" + std::string(1, char(std::toupper(routine[0]))) + routine.substr(1);
    add({name + "/" + shape, [&measured, s] { return measured.make(s); },
         [cpu](lumo::Problem& p) { return p.by(cpu); }},
        repetitions);
}

// Orders and how often each is run.
using Rounds = std::vector<std::pair<int, int>>;
inline void add(const std::string& routine, const Rounds& rounds, int k = 0) {
    for (auto [n, repetitions] : rounds)
        add(routine, std::to_string(n), {n, n, k > 0 ? k : n}, repetitions);
}

// --lumo_only, and --load=N for a machine that N busy loops keep busy.
inline int runAll(int argc, char** argv) {
    int load = 0;
    const auto end = std::remove_if(argv + 1, argv + argc, [&](const char* argument) {
        const bool mine = std::sscanf(argument, "--load=%d", &load) == 1;
        if (std::string(argument) != "--lumo_only") return mine;
        return lumoOnly = true;
    });
    argc = int(end - argv);
    const lumo::BusyLoops busy(load);  // before there are threads
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    if (lumoInitialize() != lumoNoError) {
        std::fprintf(stderr, "%s\n", lumoGetStatusString(lumoGetLastStatus()));
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    lumoShutdown();
    return 0;
}

}  // namespace bench
