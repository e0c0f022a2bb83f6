// Symmetric and Hermitian eigenproblems against the CPU LAPACK's xSYEVD and xHEEVD, generalized
// ones against its xSYGVD and xHEGVD: whole calls of the host interface, on the same data, in turn
// in one run. Columns as in bench_lapack.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_eigen
#include "common/described_problem.h"
#include "contest.h"
#include "lapack/syevd.h"
#include "lapack/sygvd.h"
#include "lumo_extended.h"

namespace {

// describe(n): the routine's description, without operands.
template <class Describe, class Function>
void add(const std::string& routine, Describe describe, Function function, char job,
         const bench::Rounds& rounds) {
    using Problem = lumo::DescribedProblem<decltype(describe(0)), Function>;
    void* const cpu = lumo::cpuRoutine(routine);
    const std::string name =
        "lumo" + std::string(1, char(std::toupper(routine[0]))) + routine.substr(1);
    for (auto [n, repetitions] : rounds)
        bench::add({name + "/" + job + "/" + std::to_string(n),
                    [=, n = n] { return std::make_unique<Problem>(describe(n), function); },
                    [=](lumo::Problem& p) { return p.by(cpu); }},
                   repetitions);
}

template <class T, class Function>
void addStandard(const std::string& routine, Function function, char job,
                 const bench::Rounds& rounds) {
    const auto describe = [=](int n) { return lumo::Syevd<T>{job, 'L', n, nullptr, 0, nullptr}; };
    add(routine, describe, function, job, rounds);
}

template <class T, class Function>
void addGeneralized(const std::string& routine, Function function, char job,
                    const bench::Rounds& rounds) {
    const auto describe = [=](int n) {
        return lumo::Sygvd<T>{1, job, 'L', n, nullptr, 0, nullptr, 0, nullptr};
    };
    add(routine, describe, function, job, rounds);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Rounds rounds{{64, 101}, {128, 51}, {256, 21}, {500, 11}, {1000, 7}, {2000, 3}};
    for (char job : {'V', 'N'}) {
        addStandard<float>("ssyevd", &lumoSsyevd, job, rounds);
        addStandard<double>("dsyevd", &lumoDsyevd, job, rounds);
        addStandard<lumo::Complex<float>>("cheevd", &lumoCheevd, job, {{500, 7}, {1000, 5}});
        addStandard<lumo::Complex<double>>("zheevd", &lumoZheevd, job, {{500, 7}, {1000, 5}});
        addGeneralized<double>("dsygvd", &lumoDsygvd, job, {{100, 51}, {500, 7}, {1000, 5}});
        addGeneralized<lumo::Complex<float>>("chegvd", &lumoChegvd, job, {{500, 7}});
    }
    return bench::runAll(argc, argv);
}
