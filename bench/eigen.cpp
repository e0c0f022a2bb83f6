// Symmetric and Hermitian eigenproblems against the CPU LAPACK's xSYEVD and xHEEVD: whole calls of
// the host interface, on the same data, in turn in one run. Columns as in bench_lapack.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_eigen
#include "common/described_problem.h"
#include "contest.h"
#include "lapack/syevd.h"
#include "lumo_extended.h"

namespace {

template <class T, class Function>
void add(const std::string& routine, Function function, char job, const bench::Rounds& rounds) {
    using Problem = lumo::DescribedProblem<lumo::Syevd<T>, Function>;
    void* const cpu = lumo::cpuRoutine(routine);
    const std::string name =
        "lumo" + std::string(1, char(std::toupper(routine[0]))) + routine.substr(1);
    for (auto [n, repetitions] : rounds)
        bench::add({name + "/" + job + "/" + std::to_string(n),
                    [=, n = n] {
                        return std::make_unique<Problem>(
                            lumo::Syevd<T>{job, 'L', n, nullptr, 0, nullptr}, function);
                    },
                    [=](lumo::Problem& p) { return p.by(cpu); }},
                   repetitions);
}

}  // namespace

int main(int argc, char** argv) {
    const bench::Rounds rounds{{64, 101}, {128, 51}, {256, 21}, {500, 11}, {1000, 7}, {2000, 3}};
    for (char job : {'V', 'N'}) {
        add<float>("ssyevd", &lumoSsyevd, job, rounds);
        add<double>("dsyevd", &lumoDsyevd, job, rounds);
        add<lumo::Complex<float>>("cheevd", &lumoCheevd, job, {{500, 7}, {1000, 5}});
        add<lumo::Complex<double>>("zheevd", &lumoZheevd, job, {{500, 7}, {1000, 5}});
    }
    return bench::runAll(argc, argv);
}
