// QR factorisation and least squares against the CPU LAPACK: whole calls of the host interface, on
// the same data, in turn in one run. Columns as in bench_lapack; a shape is m x n, then the
// right-hand sides or constraints.
//
//     OPENBLAS_NUM_THREADS=1 LUMO_SOFTWARE_THREADS=1 bench_least_squares
#include "contest.h"

namespace {

void add(const char* routine, lumo::Shape s, int repetitions) {
    std::string shape = std::to_string(s.m) + "x" + std::to_string(s.n);
    if (s.k > 0) shape += "x" + std::to_string(s.k);
    bench::add(routine, shape, s, repetitions);
}

}  // namespace

int main(int argc, char** argv) {
    for (const char* routine : {"sgeqrf", "dgeqrf", "cgeqrf", "zgeqrf", "dorgqr", "dormqr"}) {
        add(routine, {1024, 1024, 0}, 21);
        add(routine, {2048, 2048, 0}, 11);
        if (std::string(routine) != "dormqr") add(routine, {4000, 500, 0}, 21);
    }
    for (auto [m, n] : {std::pair{1024, 1024}, {2048, 2048}, {2000, 1000}, {1000, 2000}})
        for (int nrhs : {1, 100}) add("sgels", {m, n, nrhs}, 15);
    add("dgels", {2000, 1000, 1}, 15);
    for (const char* routine : {"sgelsd", "dgelsd"})
        for (auto [m, n] : {std::pair{500, 500}, {1000, 1000}, {2000, 500}})
            add(routine, {m, n, 1}, 7);
    add("sgglse", {1000, 800, 200}, 15);
    return bench::runAll(argc, argv);
}
