// A call of Lumo's against the same call of a CPU library: on the same data, in turn in one run, so
// that a change of the machine's pace meets both. Medians, and their ratio.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <complex>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lumo.h"
#include "tools/common/busy_loops.h"
#include "tools/common/measure.h"

namespace bench {

using lumo::median;
using lumo::randomElements;

// Measures Lumo alone (--lumo_only), for a profile of its calls.
inline bool lumoOnly = false;

// A routine by Lumo and by another library on data of a type that restores itself before every
// call; each returns 0 on success. `rival` names the other in the output.
template <class Data>
struct Contest {
    std::string name;
    std::function<int(Data&)> lumo, other;
    std::string rival = "cpu";
};

template <class Data>
using MakeData = std::function<std::unique_ptr<Data>()>;

template <class Data>
void run(benchmark::State& state, const Contest<Data>& contest, const MakeData<Data>& make) {
    const std::unique_ptr<Data> owner = make();
    Data& data = *owner;
    auto seconds = [&](const std::function<int(Data&)>& call) {
        data.restore();
        int failed = 0;
        const double elapsed = lumo::secondsOf([&] { failed = call(data); });
        if (failed) state.SkipWithError("a call failed");
        return elapsed;
    };
    seconds(contest.lumo);
    if (!lumoOnly) seconds(contest.other);
    std::vector<double> lumoTimes, otherTimes;
    for (auto _ : state) {
        lumoTimes.push_back(seconds(contest.lumo));
        if (!lumoOnly) otherTimes.push_back(seconds(contest.other));
        state.SetIterationTime(lumoTimes.back());
    }
    if (lumoTimes.empty()) return;
    state.counters["lumo_ms"] = 1e3 * median(lumoTimes);
    if (lumoOnly) return;
    state.counters[contest.rival + "_ms"] = 1e3 * median(otherTimes);
    state.counters["ratio"] = median(lumoTimes) / median(otherTimes);
}

// Orders and how often each is run.
using Rounds = std::vector<std::pair<int, int>>;

// One case, on data that are made when it runs.
template <class Data>
void add(const Contest<Data>& contest, const std::string& shape, int repetitions,
         const MakeData<Data>& make) {
#ifdef __clang_analyzer__  // takes the benchmark, which its library keeps, for a leak
    (void)repetitions;
    (void)shape;
    (void)contest;
    (void)make;
#else
    benchmark::RegisterBenchmark((contest.name + "/" + shape).c_str(),
                                 [=](benchmark::State& state) { run(state, contest, make); })
        ->Iterations(repetitions)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
#endif
}

// A case for each order.
template <class Data>
void add(const Contest<Data>& contest, const Rounds& rounds) {
    for (auto [n, repetitions] : rounds)
        add<Data>(contest, std::to_string(n), repetitions,
                  [n = n] { return std::make_unique<Data>(n); });
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
