// Calls, copies and memory; and all of a machine.
#include "calibration.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>

#include "common/progress.h"
#include "micro_measurement.h"

namespace lumo::micro {

using timeline::Machine;

void measureCalls(Machine& m) {
    const platform::Kernel* const set = kernelNamed("CudaMemsetTypeKernelIN7cudalib5Map1DEfE");
    const DeviceMemory x(1024);
    const auto one = [&] { launch(set, 1, 256, x.get(), 0.f, std::size_t(1)); };
    constexpr int many = 500;
    double issued = 0;
    const double all = secondsOfDevice([&] {
        issued = secondsOf([&] {
            for (int k = 0; k < many; ++k) one();
        });
    });
    const double empty = secondsOfDevice([] {}), single = secondsOfDevice(one);
    m.launch = m.bigLaunch = m.product = issued / many;
    m.synchronize = empty;
    // Where the host computes, it has done so when a launch is issued.
    m.kernelGap = 0;
    m.kernelStart = m.sharesMemory ? 0 : std::max(0., all / many);
    m.latencyOfCall =
        m.sharesMemory ? 0 : std::max(0., single - m.launch - m.kernelStart - m.synchronize);
}

void measureAllocations(Machine& m) {
    constexpr std::size_t small = 1 << 20, large = 64 << 20;
    const auto take = [](std::size_t bytes) {
        table().releaseKept();
        void* memory = nullptr;
        const double seconds = secondsOf([&] { check(table().malloc(&memory, bytes)); });
        table().free(memory);
        return seconds;
    };
    m.allocate = take(small);
    m.allocateByte = std::max(0., take(large) - m.allocate) / double(large - small);
    void* memory = nullptr;
    m.allocateHost = secondsOf([&] { check(table().mallocHost(&memory, small)); });
    table().freeHost(memory);
    table().releaseKept();
}

void measureCopies(Machine& m) {
    // What does not stay in a CPU's caches; what the CUDA platform hands to the runtime.
    constexpr std::size_t small = 64 << 10, large = 64 << 20;
    const std::size_t middle = m.sharesMemory ? large : 4 << 20;
    const DeviceMemory device(large);
    std::vector<char> pageable(large, 1);
    void* locked = nullptr;
    check(table().mallocHost(&locked, large));
    std::memset(locked, 1, large);
    const auto seconds = [&](const void* from, std::size_t bytes) {
        return secondsOfDevice(
            [&] { check(table().memcpy(device.get(), from, bytes, cudaMemcpyHostToDevice)); });
    };
    const auto rateAndStart = [&](const void* from, std::size_t bytes) {
        const double first = seconds(from, small), second = seconds(from, bytes);
        const double rate = double(bytes - small) / std::max(1e-9, second - first);
        return std::pair(rate, std::max(0., first - double(small) / rate - m.synchronize));
    };
    std::tie(m.pageable, m.pageableStart) = rateAndStart(pageable.data(), middle);
    std::tie(m.locked, m.lockedStart) = rateAndStart(locked, large);
    const double staged = double(large) / seconds(pageable.data(), large);
    m.stagedFrom = 8 << 20;
    m.stagedThreads = std::max(0.1, staged / m.pageable);
    m.locked = std::max(m.locked, staged);
    m.copy = m.launch;
    table().freeHost(locked);
}

namespace {

// A matrix of this order, read once for two products, as the bidiagonal reduction does it.
double secondsOfBothProducts(const platform::Kernel* kernel, int n, const DeviceMemory& memory) {
    float *const a = memory.get(), *const w = a + std::size_t(n) * n, *const v = w + n,
                 *const t = v + n, *const r = t + n, *const parts = r + n;
    const int most = here().table->sharesMemory() ? 8 : 256, groups = (n + 7) / 8;
    const int perPart = (groups + most - 1) / most * 8, count = (n + perPart - 1) / perPart;
    return secondsOfDevice([&] {
        launch(kernel, unsigned(count), 256, n, 0, n, 0, perPart, static_cast<const float*>(a), n,
               w, n, static_cast<const float*>(v), static_cast<const float*>(t),
               static_cast<const float*>(t), static_cast<const float*>(t), r, parts, n);
    });
}

// Of a kernel of one block, whose passes over a vector wait for each other: as many turns as its
// description has.
void measureLatency(Machine& m, const DeviceMemory& memory) {
    constexpr int rows = 4096;
    const std::vector<float> ones(rows, 1);
    float *const a = memory.get(), *const vector = a + rows, *const scalars = vector + rows;
    const platform::Kernel* const reflector = kernelNamed("ColumnReflector_kIfE");
    const double kernel = secondsOfDevice([&] {
        check(table().memcpy(a, ones.data(), rows * sizeof(float), cudaMemcpyHostToDevice));
        launch(reflector, 1, 512, rows, 0, a, vector, scalars, scalars + 1, 0,
               static_cast<const float*>(a), 1, scalars + 2);
    });
    const double copy = secondsOfDevice([&] {
        check(table().memcpy(a, ones.data(), rows * sizeof(float), cudaMemcpyHostToDevice));
    });
    constexpr double turns = 2. * rows / 512 + 10;
    const double busy = kernel - copy - m.launch - m.kernelStart - m.latencyOfCall;
    m.latency.points = {{1, std::max(0., busy) / turns}};
}

// Of the blocks of a panel of LU, who meet once a column, beside what its description says.
void measureMeetings(Machine& m, const DeviceMemory& memory) {
    constexpr int columns = 32, lanes = 256;
    const platform::Kernel* const panel = kernelNamed("LuPanel_kIfE");
    const int most = m.sharesMemory ? 0 : table().cooperativeBlocks(panel, lanes);
    if (most <= 0) m.meeting.points = {{1, 0}};
    for (int blocks = 4; blocks <= std::min(most, 256); blocks *= 4) {
        const int rows = blocks * lanes;
        float *const a = memory.get(), *const offers = a + rows * columns;
        int* const pivots = reinterpret_cast<int*>(offers + 80 * blocks);
        check(table().memset(pivots, 0, 4096));
        const double kernel = secondsOfDevice([&] {
            launch<true>(panel, unsigned(blocks), lanes, rows, columns, a, rows, 0, offers,
                         pivots + columns, pivots, pivots + columns + 2, pivots + columns + 1);
        });
        const double turns = columns * (2 + std::ceil(blocks / 32.)) + 4;
        const double busy = kernel - m.launch - m.kernelStart - m.synchronize - m.latencyOfCall;
        m.meeting.points.emplace_back(blocks,
                                      std::max(1e-9, (busy - turns * m.latency.at(1)) / columns));
    }
}

}  // namespace

void measureMemory(Machine& m) {
    const std::vector<int> orders{256, 512, 1024, 1536, 2048, 2560, 3072, 4096};
    const int largest = orders.back();
    const DeviceMemory memory(std::size_t(largest) * (largest + 300) * sizeof(float));
    const platform::Kernel* const both = kernelNamed("BothProducts_kIfLi32EE");
    const float* const a = memory.get();
    float* const y = memory.get() + std::size_t(largest) * largest;
    double efficiency = 1, fastest = 0;
    for (const int n : orders) {
        const double bytes = double(n) * n * sizeof(float);
        const double vector = secondsOfDevice(
            [&] { table().platform::Blas<float>::gemv('N', n, n, 1, a, n, y, 1, 0, y + n, 1); });
        const double kernel = secondsOfBothProducts(both, n, memory);
        const double busy = kernel - m.launch - m.kernelStart - m.synchronize - m.latencyOfCall;
        // The kernel's own rate, by size; what CUBLAS makes of it is one number for all.
        m.bandwidth.points.emplace_back(bytes, bytes / std::max(1e-9, busy));
        fastest = std::max(fastest, 4. * n * n / std::max(1e-9, busy));
        efficiency = bytes / vector / m.bandwidth.points.back().second;
    }
    m.kernelEfficiency = 1;
    m.kernelOperations = fastest;
    m.vectorEfficiency = std::min(1., efficiency);
    m.kernelLeast = 0.15;
    m.kernelLanes = m.sharesMemory ? 0 : 512;
    measureLatency(m, memory);
    measureMeetings(m, memory);
}

}  // namespace lumo::micro

namespace lumo {

timeline::Machine measuredMachine() {
    using namespace micro;
    platform::DeviceProperties p{};
    int device = 0;
    check(table().getDevice(&device));
    check(table().getDeviceProperties(&p, device));
    timeline::Machine m{};
    m.name = p.name;
    m.capability = p.major + p.minor / 10.;
    m.memory = double(p.totalGlobalMem);
    m.sharesMemory = table().sharesMemory();
    m.processors = std::max(1, p.multiProcessorCount);  // a CPU's threads are measured together
    m.hostScale = 1;
    m.keptPart = m.sharesMemory ? 0.25 : 0.125;
    const Progress progress("measuring");
    measureCalls(m);
    measureAllocations(m);
    measureCopies(m);
    measureMemory(m);
    measureProducts(m);
    measureSolves(m);
    measurePanels(m);
    return m;
}

}  // namespace lumo
