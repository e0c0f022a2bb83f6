// QR factorisation and least squares against the CPU LAPACK: whole calls of the host interface, on
// the same data, in turn in one run. Columns as in bench_lapack; a shape is m x n, then the
// right-hand sides or constraints.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_least_squares
#include "contest.h"

extern "C" {
void sgeqrf_(const int*, const int*, void*, const int*, void*, void*, const int*, int*);
decltype(sgeqrf_) cgeqrf_;
void sgels_(const char*, const int*, const int*, const int*, float*, const int*, float*, const int*,
            float*, const int*, int*, std::size_t);
void sgglse_(const int*, const int*, const int*, float*, const int*, float*, const int*, float*,
             float*, float*, float*, const int*, int*);
}

namespace {

using Complex = std::complex<float>;

float* exported(float* p) {
    return p;
}
lumoFloatComplex* exported(Complex* p) {
    return reinterpret_cast<lumoFloatComplex*>(p);
}

// Operands that a call overwrites, restored before every call, and the CPU's workspace.
template <class T>
struct Operands {
    int m, n, extra;  // right-hand sides or constraints
    std::vector<std::vector<T>> original, at;
    std::vector<T> work;

    Operands(int rows, int columns, int more, const std::vector<std::size_t>& sizes)
        : m(rows), n(columns), extra(more), work(std::size_t(64) * (rows + columns + more)) {
        for (std::size_t size : sizes) original.push_back(bench::randomElements<T>(size));
        restore();
    }
    void restore() { at = original; }
    T* operator[](int i) { return at[std::size_t(i)].data(); }
    int workSize() const { return int(work.size()); }
};

std::string shape(int m, int n, int extra = 0) {
    return std::to_string(m) + "x" + std::to_string(n) + (extra ? "x" + std::to_string(extra) : "");
}

template <class T, class Lumo, class Cpu>
void addGeqrf(const char* name, Lumo lumo, Cpu cpu) {
    using Data = Operands<T>;
    const bench::Contest<Data> contest{
        name, [=](Data& d) { return int(lumo(d.m, d.n, exported(d[0]), d.m, exported(d[1]))); },
        [=](Data& d) {
            const int size = d.workSize();
            int info = 0;
            cpu(&d.m, &d.n, d[0], &d.m, d[1], d.work.data(), &size, &info);
            return info;
        }};
    for (auto [m, n, rounds] : {std::tuple{1024, 1024, 21}, {2048, 2048, 11}, {4000, 500, 21}})
        bench::add<Data>(contest, shape(m, n), rounds, [m = m, n = n] {
            return std::make_unique<Data>(
                m, n, 0, std::vector<std::size_t>{std::size_t(m) * n, std::size_t(std::min(m, n))});
        });
}

void addSgels() {
    using Data = Operands<float>;
    const bench::Contest<Data> contest{
        "lumoSgels",
        [](Data& d) {
            return int(lumoSgels('N', d.m, d.n, d.extra, d[0], d.m, d[1], std::max(d.m, d.n)));
        },
        [](Data& d) {
            const int size = d.workSize(), ldb = std::max(d.m, d.n);
            int info = 0;
            sgels_("N", &d.m, &d.n, &d.extra, d[0], &d.m, d[1], &ldb, d.work.data(), &size, &info,
                   1);
            return info;
        }};
    for (auto [m, n] : {std::pair{1024, 1024}, {2048, 2048}, {2000, 1000}, {1000, 2000}})
        for (int nrhs : {1, 100})
            bench::add<Data>(contest, shape(m, n, nrhs), 15, [=, m = m, n = n] {
                return std::make_unique<Data>(
                    m, n, nrhs,
                    std::vector<std::size_t>{std::size_t(m) * n,
                                             std::size_t(std::max(m, n)) * nrhs});
            });
}

void addSgglse() {
    using Data = Operands<float>;
    const bench::Contest<Data> contest{
        "lumoSgglse",
        [](Data& d) {
            return int(lumoSgglse(d.m, d.n, d.extra, d[0], d.m, d[1], d.extra, d[2], d[3], d[4]));
        },
        [](Data& d) {
            const int size = d.workSize();
            int info = 0;
            sgglse_(&d.m, &d.n, &d.extra, d[0], &d.m, d[1], &d.extra, d[2], d[3], d[4],
                    d.work.data(), &size, &info);
            return info;
        }};
    const int m = 1000, n = 800, p = 200;
    bench::add<Data>(contest, shape(m, n, p), 15, [=] {
        return std::make_unique<Data>(
            m, n, p,
            std::vector<std::size_t>{std::size_t(m) * n, std::size_t(p) * n, std::size_t(m),
                                     std::size_t(p), std::size_t(n)});
    });
}

}  // namespace

int main(int argc, char** argv) {
    addGeqrf<float>("lumoSgeqrf", lumoSgeqrf, sgeqrf_);
    addGeqrf<Complex>("lumoCgeqrf", lumoCgeqrf, cgeqrf_);
    addSgels();
    addSgglse();
    return bench::runAll(argc, argv);
}
