// The singular value decomposition, by gesvd and by gesdd, against the CPU LAPACK's routine of the
// same name; and gesvd against xGESDD, another algorithm. Whole calls of the host interface, on the
// same data, in turn in one run. Columns as in bench_lapack.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_svd
#include "common/described_problem.h"
#include "contest.h"
#include "lumo_extended.h"

namespace {

using namespace std::string_literals;

struct SvdShape {
    int m, n, rounds;
};

// Lumo's function against the CPU's `rival`, whose arguments it takes.
template <class Routine, class Function>
void add(const std::string& name, Routine routine, Function lumo, const std::string& rival,
         const SvdShape& s) {
    void* const cpu = lumo::cpuRoutine(rival);
    routine.m = s.m;
    routine.n = s.n;
    bench::add(
        {name + std::to_string(s.m) + "x" + std::to_string(s.n),
         [=] { return std::make_unique<lumo::DescribedProblem<Routine, Function>>(routine, lumo); },
         [=](lumo::Problem& p) { return p.by(cpu); }, rival.substr(1)},
        s.rounds);
}

template <class T, class Iteration, class Division>
void add(char letter, Iteration gesvd, Division gesdd, char job,
         const std::vector<SvdShape>& shapes) {
    const lumo::Gesvd<T> iteration{job, job, 0, 0, nullptr, 0, nullptr, nullptr, 1, nullptr, 1};
    const lumo::Gesdd<T> division{job, 0, 0, nullptr, 0, nullptr, nullptr, 1, nullptr, 1};
    const auto iterate = [gesvd](char job, auto... others) { return gesvd(job, job, others...); };
    const std::string lumo = "lumo" + std::string(1, char(std::toupper(letter)));
    const std::string vectors(1, job), ofGesvd = lumo + "gesvd/" + vectors + vectors + "/",
                                       ofGesdd = lumo + "gesdd/" + vectors + "/";
    const std::string gesvds = letter + "gesvd"s, gesdds = letter + "gesdd"s;
    for (const SvdShape& s : shapes) add(ofGesvd, iteration, gesvd, gesvds, s);
    for (const SvdShape& s : shapes) add(ofGesvd, division, iterate, gesdds, s);
    for (const SvdShape& s : shapes) add(ofGesdd, division, gesdd, gesdds, s);
}

}  // namespace

int main(int argc, char** argv) {
    const SvdShape order1000{1000, 1000, 5}, order1500{1500, 1500, 3};
    const std::vector<SvdShape> shapes{{64, 64, 101}, {128, 128, 51}, {256, 256, 21},
                                       {500, 500, 7}, order1000,      {2000, 2000, 3},
                                       {3000, 500, 5}},
        doubles{{64, 64, 101}, {128, 128, 51}, {256, 256, 21}, {500, 500, 7}, order1000};
    for (char job : {'N', 'S', 'A'}) add<float>('s', &lumoSgesvd, &lumoSgesdd, job, shapes);
    for (char job : {'N', 'S'}) add<double>('d', &lumoDgesvd, &lumoDgesdd, job, doubles);
    add<lumo::Complex<float>>('c', &lumoCgesvd, &lumoCgesdd, 'S', {order1000, order1500});
    add<lumo::Complex<double>>('z', &lumoZgesvd, &lumoZgesdd, 'S', {order1000, order1500});
    return bench::runAll(argc, argv);
}
