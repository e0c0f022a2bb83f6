// The singular value decomposition against the CPU LAPACK's xGESVD, and the same against xGESDD,
// which takes another algorithm: whole calls of the host interface, on the same data, in turn in
// one run. Columns as in bench_lapack.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_svd
#include "common/described_problem.h"
#include "contest.h"
#include "lumo_extended.h"

namespace {

template <class T, class Function>
class SvdProblem : public lumo::DescribedProblem<lumo::Gesvd<T>, Function> {
  public:
    SvdProblem(char job, lumo::Shape s, Function lumo)
        : lumo::DescribedProblem<lumo::Gesvd<T>, Function>(
              {job, job, s.m, s.n, nullptr, 0, nullptr, nullptr, 1, nullptr, 1}, lumo),
          integers_(8 * std::size_t(std::min(s.m, s.n))) {}

    int byGesdd(void* gesdd) {
        const auto& r = this->routine_;
        return this->withWorkspace([&](T* work, int size, int* info) {
            const auto call = [&](auto... realWork) {
                lumo::call(gesdd, &r.jobu, &r.m, &r.n, r.a, &r.lda, r.s, r.u, &r.ldu, r.vt, &r.ldvt,
                           work, &size, realWork..., integers_.data(), info);
            };
            if constexpr (lumo::isComplex<T>)
                call(this->real_.data());
            else
                call();
        });
    }

  private:
    std::vector<int> integers_;
};

struct SvdShape {
    int m, n, rounds;
};

template <class T, class Function>
void add(char letter, Function function, char job, const std::vector<SvdShape>& shapes) {
    using Data = SvdProblem<T, Function>;
    const std::string name =
        "lumo" + std::string(1, char(std::toupper(letter))) + "gesvd/" + std::string(2, job) + "/";
    for (const bool divide : {false, true}) {
        const std::string rival = divide ? "gesdd" : "gesvd";
        void* const cpu = lumo::cpuRoutine(letter + rival);
        for (const SvdShape& s : shapes)
            bench::add({name + std::to_string(s.m) + "x" + std::to_string(s.n),
                        [=] {
                            return std::make_unique<Data>(job, lumo::Shape{s.m, s.n, 0}, function);
                        },
                        [=](lumo::Problem& p) {
                            return divide ? static_cast<Data&>(p).byGesdd(cpu) : p.by(cpu);
                        },
                        rival},
                       s.rounds);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<SvdShape> shapes{
        {500, 500, 7}, {1000, 1000, 5}, {2000, 2000, 3}, {3000, 500, 5}};
    for (char job : {'N', 'S', 'A'}) add<float>('s', &lumoSgesvd, job, shapes);
    add<lumo::Complex<float>>('c', &lumoCgesvd, 'S', {{1000, 1000, 5}});
    add<double>('d', &lumoDgesvd, 'S', {{500, 500, 7}, {1000, 1000, 5}});
    add<double>('d', &lumoDgesvd, 'N', {{1000, 1000, 5}});
    add<lumo::Complex<double>>('z', &lumoZgesvd, 'S', {{1000, 1000, 5}});
    return bench::runAll(argc, argv);
}
