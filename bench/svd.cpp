// The singular value decomposition against the CPU LAPACK's xGESVD, and the same against xGESDD,
// which takes another algorithm: whole calls of the host interface, on the same data, in turn in
// one run. Columns as in bench_lapack.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_svd
#include "contest.h"

extern "C" {
void sgesvd_(const char*, const char*, const int*, const int*, float*, const int*, float*, float*,
             const int*, float*, const int*, float*, const int*, int*, std::size_t, std::size_t);
void cgesvd_(const char*, const char*, const int*, const int*, std::complex<float>*, const int*,
             float*, std::complex<float>*, const int*, std::complex<float>*, const int*,
             std::complex<float>*, const int*, float*, int*, std::size_t, std::size_t);
void sgesdd_(const char*, const int*, const int*, float*, const int*, float*, float*, const int*,
             float*, const int*, float*, const int*, int*, int*, std::size_t);
void cgesdd_(const char*, const int*, const int*, std::complex<float>*, const int*, float*,
             std::complex<float>*, const int*, std::complex<float>*, const int*,
             std::complex<float>*, const int*, float*, int*, int*, std::size_t);
}

namespace {

using Complex = std::complex<float>;

// One decomposition; the CPU's workspaces are of the sizes that it asks for.
template <class T>
struct Decomposition {
    char job;
    int m, n, k;
    std::vector<T> original, a, u, vt, work;
    std::vector<float> s, realWork;
    std::vector<int> intWork;

    Decomposition(char j, int rows, int columns)
        : job(j),
          m(rows),
          n(columns),
          k(std::min(m, n)),
          original(bench::randomElements<T>(std::size_t(m) * n)),
          a(original),
          u(std::size_t(m) * m),
          vt(std::size_t(n) * n),
          s(k),
          realWork(std::size_t(8) * k * k + 8 * std::size_t(m + n)),
          intWork(8 * k) {}
    void restore() { a = original; }
    int ldvt() const { return job == 'S' ? k : n; }
};

// Runs an xGESVD or xGESDD twice: to ask for the workspace, the first time, and to work.
template <class T, class Routine>
int withWorkspace(Decomposition<T>& d, Routine routine) {
    int info = 0;
    if (d.work.empty()) {
        const int query = -1;
        T size{};
        routine(&size, &query, &info);
        d.work.resize(std::size_t(std::real(size)));
    }
    const int size = int(d.work.size());
    routine(d.work.data(), &size, &info);
    return info;
}

int gesvd(Decomposition<float>& d) {
    const int ldvt = d.ldvt();
    return withWorkspace(d, [&](float* work, const int* size, int* info) {
        sgesvd_(&d.job, &d.job, &d.m, &d.n, d.a.data(), &d.m, d.s.data(), d.u.data(), &d.m,
                d.vt.data(), &ldvt, work, size, info, 1, 1);
    });
}
int gesvd(Decomposition<Complex>& d) {
    const int ldvt = d.ldvt();
    return withWorkspace(d, [&](Complex* work, const int* size, int* info) {
        cgesvd_(&d.job, &d.job, &d.m, &d.n, d.a.data(), &d.m, d.s.data(), d.u.data(), &d.m,
                d.vt.data(), &ldvt, work, size, d.realWork.data(), info, 1, 1);
    });
}
int gesdd(Decomposition<float>& d) {
    const int ldvt = d.ldvt();
    return withWorkspace(d, [&](float* work, const int* size, int* info) {
        sgesdd_(&d.job, &d.m, &d.n, d.a.data(), &d.m, d.s.data(), d.u.data(), &d.m, d.vt.data(),
                &ldvt, work, size, d.intWork.data(), info, 1);
    });
}
int gesdd(Decomposition<Complex>& d) {
    const int ldvt = d.ldvt();
    return withWorkspace(d, [&](Complex* work, const int* size, int* info) {
        cgesdd_(&d.job, &d.m, &d.n, d.a.data(), &d.m, d.s.data(), d.u.data(), &d.m, d.vt.data(),
                &ldvt, work, size, d.realWork.data(), d.intWork.data(), info, 1);
    });
}

int lumo(Decomposition<float>& d) {
    return lumoSgesvd(d.job, d.job, d.m, d.n, d.a.data(), d.m, d.s.data(), d.u.data(), d.m,
                      d.vt.data(), d.ldvt());
}
int lumo(Decomposition<Complex>& d) {
    auto exported = [](std::vector<Complex>& v) {
        return reinterpret_cast<lumoFloatComplex*>(v.data());
    };
    return lumoCgesvd(d.job, d.job, d.m, d.n, exported(d.a), d.m, d.s.data(), exported(d.u), d.m,
                      exported(d.vt), d.ldvt());
}

struct Shape {
    int m, n, rounds;
};

template <class T>
void addAgainst(const char* rival, int (*call)(Decomposition<T>&), const std::string& name,
                char job, const std::vector<Shape>& shapes) {
    using Data = Decomposition<T>;
    const bench::Contest<Data> contest{name, [](Data& d) { return lumo(d); }, call, rival};
    for (const Shape& s : shapes)
        bench::add<Data>(contest, std::to_string(s.m) + "x" + std::to_string(s.n), s.rounds,
                         [=] { return std::make_unique<Data>(job, s.m, s.n); });
}

template <class T>
void add(const std::string& name, char job, const std::vector<Shape>& shapes) {
    const std::string full = name + "/" + job + job;
    addAgainst<T>("gesvd", gesvd, full, job, shapes);
    addAgainst<T>("gesdd", gesdd, full, job, shapes);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Shape> shapes{
        {500, 500, 7}, {1000, 1000, 5}, {2000, 2000, 3}, {3000, 500, 5}};
    for (char job : {'N', 'S', 'A'}) add<float>("lumoSgesvd", job, shapes);
    add<Complex>("lumoCgesvd", 'S', {{1000, 1000, 5}});
    return bench::runAll(argc, argv);
}
