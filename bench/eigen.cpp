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
class EigenProblem : public lumo::DescribedProblem<lumo::Syevd<T>, Function> {
    using Base = lumo::DescribedProblem<lumo::Syevd<T>, Function>;

  public:
    EigenProblem(char job, int n, Function lumo)
        : Base({job, 'L', n, nullptr, 0, nullptr}, lumo), integers_(3 + 5 * std::size_t(n)) {}

    int by(void* syevd) override {
        const auto& r = this->routine_;
        return this->withWorkspace([&](T* work, int size, int* info) {
            const int integers = int(integers_.size()), reals = int(this->real_.size());
            const auto call = [&](auto... realWork) {
                lumo::call(syevd, &r.jobz, &r.uplo, &r.n, r.a, &r.lda, r.w, work, &size,
                           realWork..., integers_.data(), &integers, info);
            };
            if constexpr (lumo::isComplex<T>)
                call(this->real_.data(), &reals);
            else
                call();
        });
    }

  private:
    std::vector<int> integers_;
};

template <class T, class Function>
void add(const std::string& routine, Function function, char job, const bench::Rounds& rounds) {
    void* const cpu = lumo::cpuRoutine(routine);
    const std::string name =
        "lumo" + std::string(1, char(std::toupper(routine[0]))) + routine.substr(1);
    for (auto [n, repetitions] : rounds)
        bench::add(
            {name + "/" + job + "/" + std::to_string(n),
             [=, n = n] { return std::make_unique<EigenProblem<T, Function>>(job, n, function); },
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
