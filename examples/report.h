// One problem solved by Lumo and by the CPU LAPACK: times, residuals, ratio.
#pragma once

#include <lumo.h>

#include <algorithm>
#include <chrono>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/progress.h"
#include "common/residual.h"

extern "C" {
void sgesv_(const int* n, const int* nrhs, float* a, const int* lda, int* ipiv, float* b,
            const int* ldb, int* info);
void cgesv_(const int* n, const int* nrhs, std::complex<float>* a, const int* lda, int* ipiv,
            std::complex<float>* b, const int* ldb, int* info);
}

namespace example {

inline lumoStatus lumoGesv(int n, float* a, int* ipiv, float* b) {
    return lumoSgesv(n, 1, a, n, ipiv, b, n);
}
// The library's complex numbers have the layout of C++'s.
inline lumoStatus lumoGesv(int n, std::complex<float>* a, int* ipiv, std::complex<float>* b) {
    return lumoCgesv(n, 1, reinterpret_cast<lumoFloatComplex*>(a), n, ipiv,
                     reinterpret_cast<lumoFloatComplex*>(b), n);
}
inline int cpuGesv(int n, float* a, int* ipiv, float* b) {
    const int one = 1;
    int info = 0;
    sgesv_(&n, &one, a, &n, ipiv, b, &n, &info);
    return info;
}
inline int cpuGesv(int n, std::complex<float>* a, int* ipiv, std::complex<float>* b) {
    const int one = 1;
    int info = 0;
    cgesv_(&n, &one, a, &n, ipiv, b, &n, &info);
    return info;
}

// The scaled residual of a solution that single precision should find with ease.
constexpr double residualBound = 30;

template <class T>
struct Solution {
    std::vector<T> x;
    double seconds;
    double residual;
};

// The seconds that `call()`, which returns 0 or what failed, takes after `prepare()`: the median of
// some runs (short ones vary) after a first that also warms up the memory, the libraries and the
// device.
template <class Prepare, class Call>
double secondsOf(const std::string& who, int runs, Prepare prepare, Call call) {
    const lumo::Progress progress("solving, " + who);
    std::vector<double> seconds;
    for (int run = 0; run <= runs; ++run) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        const int failed = call();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (failed) throw std::runtime_error(who + " fails with " + std::to_string(failed));
        if (run > 0) seconds.push_back(elapsed.count());
    }
    std::nth_element(seconds.begin(), seconds.begin() + runs / 2, seconds.end());
    return seconds[runs / 2];
}

// Solves a copy of A x = b by `gesv(n, a, ipiv, x)` and times it.
template <class T, class Gesv>
Solution<T> timedSolve(const std::string& who, const std::vector<T>& a, const std::vector<T>& b,
                       Gesv gesv) {
    const int n = int(b.size());
    std::vector<T> factors(a.size());
    std::vector<int> ipiv(b.size());
    Solution<T> solution{b, 0, 0};
    const auto copy = [&] {
        factors = a;
        solution.x = b;
    };
    solution.seconds = secondsOf(
        who, 1, copy, [&] { return gesv(n, factors.data(), ipiv.data(), solution.x.data()); });
    solution.residual = lumo::scaledResidual(n, n, 1, a.data(), b.data(), solution.x.data());
    return solution;
}

// Starts Lumo and says on which device.
inline void startLumo() {
    if (const lumoStatus status = lumoInitialize())
        throw std::runtime_error(lumoGetStatusString(status));
    int device = 0;
    char name[300] = "";
    lumoGetExecutingDevice(&device);
    lumoGetDeviceInfo(device, name, sizeof name);
    std::printf("device:      %s\n", name);
}

inline void print(const char* who, double seconds, double residual) {
    std::printf("%-12s %8.4f s   residual %.2g\n", who, seconds, residual);
}

// Starts Lumo, solves A x = b with it and, to compare, with the CPU LAPACK, and prints how both
// did. Returns Lumo's solution. Throws a std::runtime_error if either fails or is inaccurate.
template <class T>
std::vector<T> solveAndReport(const std::vector<T>& a, const std::vector<T>& b) {
    startLumo();
    std::printf("n:           %zu\n", b.size());
    std::fflush(stdout);

    const auto lumoSolve = [](int n, T* f, int* ipiv, T* x) { return lumoGesv(n, f, ipiv, x); };
    const auto cpuSolve = [](int n, T* f, int* ipiv, T* x) { return cpuGesv(n, f, ipiv, x); };
    const Solution<T> ours = timedSolve("Lumo", a, b, lumoSolve);
    lumoShutdown();
    const Solution<T> theirs = timedSolve("CPU LAPACK", a, b, cpuSolve);
    print("Lumo:", ours.seconds, ours.residual);
    print("CPU LAPACK:", theirs.seconds, theirs.residual);
    std::printf("Lumo takes %.2f times the CPU LAPACK's time\n", ours.seconds / theirs.seconds);
    for (const double residual : {ours.residual, theirs.residual})
        if (!(residual < residualBound)) throw std::runtime_error("the solution is inaccurate");
    return ours.x;
}

// The example's one argument, a size.
inline int sizeArgument(int argc, char** argv, int usual, int least, int most) {
    if (argc < 2) return usual;
    char* end = nullptr;
    const long size = std::strtol(argv[1], &end, 10);
    if (argc > 2 || end == argv[1] || *end || size < least || size > most)
        throw std::runtime_error("usage: " + std::string(argv[0]) + " [N], N from " +
                                 std::to_string(least) + " to " + std::to_string(most));
    return int(size);
}

}  // namespace example
