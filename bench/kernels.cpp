// Auxiliary kernels on the software device against loops written for the CPU, on one thread:
// 4096 x 4096 float matrices or of the order given, whole launches, medians. `ratio` is the
// kernel's time over the loop's; LASR's loop is the CPU LAPACK's, the transposed matrix-vector
// product's the CPU BLAS's.
#include <benchmark/benchmark.h>
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/LASWP/LASWP.h"
#include "basic/Transpose/Transpose.h"
#include "basic/lasr/lasr.h"
#include "blas/gemv/gemv.h"
#include "platform/cpu/blas.h"
#include "platform/cpu/lapack.h"
#include "platform/cuda3.h"

// The loops are compiled for the same instruction sets as the kernels.
#if defined(__x86_64__) && !defined(__clang__)
#define FOR_THIS_CPU __attribute__((target_clones("default", "arch=x86-64-v3"), noinline))
#else
#define FOR_THIS_CPU __attribute__((noinline))
#endif

namespace {

constexpr int order = 4096;
constexpr std::size_t elements = std::size_t(order) * order;
constexpr std::size_t bytes = elements * sizeof(float);

struct Free {
    void operator()(float* p) const { std::free(p); }
};
struct CudaFree {
    void operator()(float* p) const { cudaFree(p); }
};
using HostMatrix = std::unique_ptr<float, Free>;
using DeviceMatrix = std::unique_ptr<float, CudaFree>;

// Huge pages, as the software device gives to its large blocks.
HostMatrix hostMatrix() {
    void* p = nullptr;
    if (posix_memalign(&p, std::size_t(2) << 20, bytes) != 0) std::abort();
    madvise(p, bytes, MADV_HUGEPAGE);
    std::fill_n(static_cast<float*>(p), elements, 1.0f);
    return HostMatrix(static_cast<float*>(p));
}

DeviceMatrix deviceMatrix() {
    void* p = nullptr;
    if (cudaMalloc(&p, bytes) != cudaSuccess) std::abort();
    DeviceMatrix matrix(static_cast<float*>(p));
    lumo::LASET('A', order, order, 1.0f, 1.0f, matrix.get(), order);
    return matrix;
}

FOR_THIS_CPU void copyLoop(const float* a, float* b) {
    for (int j = 0; j < order; ++j)
        for (int i = 0; i < order; ++i)
            b[std::size_t(j) * order + i] = a[std::size_t(j) * order + i];
}

FOR_THIS_CPU void setLoop(float alpha, float beta, float* a) {
    for (int j = 0; j < order; ++j) {
        for (int i = 0; i < order; ++i) a[std::size_t(j) * order + i] = alpha;
        a[std::size_t(j) * order + j] = beta;
    }
}

// By squares that stay in the cache, without which a loop takes several times as long.
FOR_THIS_CPU void transposeLoop(const float* a, float* b) {
    constexpr int side = 32;
    for (int jj = 0; jj < order; jj += side)
        for (int ii = 0; ii < order; ii += side)
            for (int i = ii; i < ii + side; ++i)
                for (int j = jj; j < jj + side; ++j)
                    b[std::size_t(i) * order + j] = a[std::size_t(j) * order + i];
}

FOR_THIS_CPU void interchangeLoop(float* a, int count, const int* pivots) {
    for (int j = 0; j < order; ++j) {
        float* column = a + std::size_t(j) * order;
        for (int r = 0; r < count; ++r) std::swap(column[r], column[pivots[r] - 1]);
    }
}

// Pivots as an LU panel of `count` columns chooses them.
std::vector<int> pivots(int count) {
    std::mt19937 engine(1);
    std::vector<int> p(count);
    for (int r = 0; r < count; ++r) p[r] = std::uniform_int_distribution<int>(r + 1, order)(engine);
    return p;
}

double median(std::vector<double>& times) {
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return times[times.size() / 2];
}

template <class F>
double seconds(F f) {
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Times both in turn, so that a change of the machine's pace meets both.
template <class Kernel, class Loop>
void compare(benchmark::State& state, Kernel kernel, Loop loop) {
    std::vector<double> ours, plain;
    for (auto _ : state) {
        ours.push_back(seconds([&] {
            kernel();
            cudaThreadSynchronize();
        }));
        plain.push_back(seconds([&] {
            loop();
            benchmark::ClobberMemory();
        }));
        state.SetIterationTime(ours.back());
    }
    if (cudaGetLastError() != cudaSuccess) state.SkipWithError("a launch failed");
    const double kernelTime = median(ours), loopTime = median(plain);
    state.counters["kernel_ms"] = 1e3 * kernelTime;
    state.counters["loop_ms"] = 1e3 * loopTime;
    state.counters["ratio"] = kernelTime / loopTime;
}

void LACPY(benchmark::State& state) {
    const DeviceMatrix a = deviceMatrix(), b = deviceMatrix();
    const HostMatrix x = hostMatrix(), y = hostMatrix();
    compare(
        state, [&] { lumo::LACPY('A', order, order, a.get(), order, b.get(), order); },
        [&] { copyLoop(x.get(), y.get()); });
}

void LASET(benchmark::State& state) {
    const DeviceMatrix a = deviceMatrix();
    const HostMatrix x = hostMatrix();
    compare(
        state, [&] { lumo::LASET('A', order, order, 2.0f, 3.0f, a.get(), order); },
        [&] { setLoop(2.0f, 3.0f, x.get()); });
}

void Transpose(benchmark::State& state) {
    const DeviceMatrix a = deviceMatrix(), b = deviceMatrix();
    const HostMatrix x = hostMatrix(), y = hostMatrix();
    compare(
        state,
        [&] { lumo::transpose(b.get(), order, a.get(), order, (unsigned long)order, order); },
        [&] { transposeLoop(x.get(), y.get()); });
}

void LASWP(benchmark::State& state) {
    const int count = int(state.range(0));
    const DeviceMatrix a = deviceMatrix();
    const HostMatrix x = hostMatrix();
    const std::vector<int> p = pivots(count);
    compare(
        state, [&] { lumo::LASWP(order, a.get(), order, 1, count, p.data(), 1); },
        [&] { interchangeLoop(x.get(), count, p.data()); });
}

void TransposedProduct(benchmark::State& state) {
    const int m = int(state.range(0)), n = int(state.range(1)), lda = m + 32;
    const DeviceMatrix a = deviceMatrix(), vectors = deviceMatrix();
    const HostMatrix x = hostMatrix(), y = hostMatrix();
    compare(
        state,
        [&] {
            lumo::gemv('T', m, n, 1.0f, a.get(), lda, vectors.get(), 1, 0.0f, vectors.get() + order,
                       1);
        },
        [&] { cpu::gemv<float>('T', m, n, 1, x.get(), lda, y.get(), 1, 0, y.get() + order, 1); });
}

// One sweep of rotations on the columns of an n x n matrix; the loop is the CPU LAPACK's.
void LASR(benchmark::State& state) {
    const int n = int(state.range(0)), lda = n + 32;
    const DeviceMatrix a = deviceMatrix(), rotations = deviceMatrix();
    const HostMatrix x = hostMatrix();
    std::vector<float> c(n, 0.8f), s(n, 0.6f);
    float* const sines = rotations.get() + order;
    cudaMemcpy(rotations.get(), c.data(), n * sizeof(float), cudaMemcpyHostToDevice);
    cudaMemcpy(sines, s.data(), n * sizeof(float), cudaMemcpyHostToDevice);
    compare(
        state, [&] { lumo::LASR('R', 'V', 'F', n, n, rotations.get(), sines, a.get(), lda); },
        [&] { cpu::lasr<float>('R', 'V', 'F', n, n, c.data(), s.data(), x.get(), lda); });
}

#define LUMO_COMPARISON(name) \
    BENCHMARK(name)->UseManualTime()->Unit(benchmark::kMillisecond)->MinTime(1)
LUMO_COMPARISON(LACPY);
LUMO_COMPARISON(LASET);
LUMO_COMPARISON(Transpose);
LUMO_COMPARISON(TransposedProduct)
    ->Args({500, 500})
    ->Args({1000, 1000})
    ->Args({4000, 4000})
    ->Args({1000, 48})
    ->Args({48, 1000});
LUMO_COMPARISON(LASWP)->Arg(16)->Arg(64)->Arg(192);
LUMO_COMPARISON(LASR)->Arg(500)->Arg(1000)->Arg(2000);

}  // namespace

int main(int argc, char** argv) {
    setenv("LUMO_PLATFORM", "software", 1);
    setenv("LUMO_SOFTWARE_THREADS", "1", 1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
