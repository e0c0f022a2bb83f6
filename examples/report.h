// One linear system solved by Lumo and by the CPU LAPACK: times, residuals, ratio.
#pragma once

#include <lumo.h>

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

// Solves a copy of A x = b by `gesv(n, a, ipiv, x)` and times it. The time is that
// of a second run: the first also warms up the memory, the libraries and the device.
template <class T, class Gesv>
Solution<T> timedSolve(const std::string& who, const std::vector<T>& a, const std::vector<T>& b,
                       Gesv gesv) {
    const int n = int(b.size());
    std::vector<T> factors(a.size());
    std::vector<int> ipiv(b.size());
    Solution<T> solution{b, 0, 0};
    const lumo::Progress progress("solving, " + who);
    for (int run = 0; run < 2; ++run) {
        factors = a;
        solution.x = b;
        const auto start = std::chrono::steady_clock::now();
        const int failed = gesv(n, factors.data(), ipiv.data(), solution.x.data());
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        if (failed) throw std::runtime_error(who + " fails with " + std::to_string(failed));
        solution.seconds = elapsed.count();
    }
    solution.residual = lumo::scaledResidual(n, 1, a.data(), b.data(), solution.x.data());
    return solution;
}

inline void print(const char* who, double seconds, double residual) {
    std::printf("%-12s %8.4f s   residual %.2g\n", who, seconds, residual);
}

// Starts Lumo, solves A x = b with it and, to compare, with the CPU LAPACK, and prints how both
// did. Returns Lumo's solution. Throws a std::runtime_error if either fails or is inaccurate.
template <class T>
std::vector<T> solveAndReport(const std::vector<T>& a, const std::vector<T>& b) {
    if (const lumoStatus status = lumoInitialize())
        throw std::runtime_error(lumoGetStatusString(status));
    int device = 0;
    char name[300] = "";
    lumoGetExecutingDevice(&device);
    lumoGetDeviceInfo(device, name, sizeof name);
    std::printf("device:      %s\nn:           %zu\n", name, b.size());
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
