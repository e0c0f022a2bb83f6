#include "calibration.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <stdexcept>

#include "common/measure.h"
#include "common/progress.h"
#include "platform/cuda3.h"

namespace lumo {
namespace {

using timeline::BySize;
using timeline::Machine;

const platform::Choice& here() {
    return *platform::lumo_private_platform(nullptr);
}
const platform::Table& table() {
    return *here().table;
}

void check(int error) {
    if (error) throw std::runtime_error(table().getErrorString(error));
}

// The least of a call's seconds, from its start until the device is through: what else runs on a
// machine only adds.
double secondsOfDevice(const std::function<void()>& call, double enough = 0.15) {
    call();
    check(table().threadSynchronize());
    std::vector<double> times;
    for (double spent = 0; times.size() < 7 || (spent < enough && times.size() < 200);) {
        times.push_back(secondsOf([&] {
            call();
            check(table().threadSynchronize());
        }));
        spent += times.back();
    }
    return *std::min_element(times.begin(), times.end());
}

class DeviceMemory {
  public:
    explicit DeviceMemory(std::size_t bytes) {
        check(table().malloc(&data_, bytes));
        check(table().memset(data_, 0, bytes));
    }
    ~DeviceMemory() { table().free(data_); }
    DeviceMemory(const DeviceMemory&) = delete;
    DeviceMemory& operator=(const DeviceMemory&) = delete;
    float* get() const { return static_cast<float*>(data_); }

  private:
    void* data_ = nullptr;
};

// Launches one of the library's kernels with these arguments, of the types that it has them.
template <class... A>
void launch(const platform::Kernel* kernel, platform::Dim3 grid, platform::Dim3 block,
            A... arguments) {
    check(table().configureCall(grid, block, 0, nullptr));
    std::size_t offset = 0;
    const auto push = [&](const auto& argument) {
        constexpr std::size_t size = sizeof argument;  // NOLINT(bugprone-sizeof-expression)
        offset = (offset + size - 1) / size * size;
        check(table().setupArgument(&argument, size, offset));
        offset += size;
    };
    (push(arguments), ...);
    check(table().launch(kernel));
}

const platform::Kernel* kernelNamed(const char* part) {
    const platform::Kernel* kernel = here().kernel(part);
    if (!kernel) throw std::runtime_error(std::string("the library has no kernel ") + part);
    return kernel;
}

// The coefficients of t = a + b x, by least squares of the relative errors; neither is negative.
std::pair<double, double> line(const std::vector<std::pair<double, double>>& points) {
    double w = 0, x = 0, xx = 0, y = 0, xy = 0;
    for (const auto& [at, t] : points) {
        const double weight = 1 / (t * t);
        w += weight;
        x += weight * at;
        xx += weight * at * at;
        y += weight * t;
        xy += weight * at * t;
    }
    const double b = (w * xy - x * y) / (w * xx - x * x), a = (y - b * x) / w;
    return a < 0 ? std::pair(0., xy / xx) : std::pair(a, b);
}

// --- Calls -----------------------------------------------------------------------------------

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

// --- Kernels and products --------------------------------------------------------------------

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

void measureMemory(Machine& m) {
    const std::vector<int> orders{256, 512, 1024, 1536, 2048, 2560, 3072, 4096};
    const int largest = orders.back();
    const DeviceMemory memory(std::size_t(largest) * (largest + 300) * sizeof(float));
    const platform::Kernel* const both = kernelNamed("BothProducts_kIfE");
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
}

template <class T>
double secondsOfGemm(const DeviceMemory& x, int m, int n, int k) {
    T* const a = reinterpret_cast<T*>(x.get());
    return secondsOfDevice([&] {
        table().platform::Blas<T>::gemm('N', 'N', m, n, k, T(1), a, m, a, k, T(1),
                                        a + std::size_t(2048) * 1024, m);
    });
}

void measureProducts(Machine& m) {
    const DeviceMemory memory(std::size_t(2048) * 3072 * sizeof(double));
    const double tiny = secondsOfGemm<float>(memory, 8, 8, 8);
    m.productStart = std::max(0., tiny - m.product - m.synchronize - m.latencyOfCall);
    m.productTiles = {{8, 8, 1}};
    m.productSplit = 0;
    if (!m.sharesMemory) m.productTiles = {{128, 128, 1}, {64, 64, 0.8}}, m.productSplit = 256;
    std::vector<std::pair<double, double>> points;
    constexpr double order = 1024;
    for (const int k : {32, 64, 96, 256, 512, 1024})
        points.emplace_back(k, secondsOfGemm<float>(memory, int(order), int(order), k) - tiny);
    const auto [start, perStep] = line(points);
    m.productSingle = 2 * order * order / perStep;
    m.productDepth = start / perStep;
    const double wide = secondsOfGemm<double>(memory, int(order), int(order), int(order)) - tiny;
    m.productDouble = 2 * order * order * (order + m.productDepth) / wide;

    // An update of few steps moves as much as it computes.
    constexpr double large = 3072, few = 32, bytes = 2 * large * large * sizeof(float);
    const double update = secondsOfGemm<float>(memory, int(large), int(large), int(few)) - tiny;
    const double flops = 2 * large * large * (few + m.productDepth) / m.productSingle;
    const double traffic = bytes / m.bandwidth.at(bytes);
    m.productExposed =
        std::clamp((update - std::max(flops, traffic)) / std::min(flops, traffic), 0., 1.);
}

// A triangle of ones on the diagonal.
template <class T>
double secondsOfSolve(const DeviceMemory& x, int order, int sides) {
    T* const a = reinterpret_cast<T*>(x.get());
    return secondsOfDevice([&] {
        table().platform::Blas<T>::trsm('L', 'L', 'N', 'U', order, sides, T(1), a, order,
                                        a + std::size_t(2048) * 2048, order);
    });
}

void measureSolves(Machine& m) {
    const DeviceMemory memory(std::size_t(2048) * 3072 * sizeof(double));
    const double call = m.product + m.synchronize + m.latencyOfCall + m.productStart;
    constexpr int order = 128;
    std::vector<std::pair<double, double>> points;
    for (const int sides : {64, 256, 1024, 2048})
        points.emplace_back(sides, secondsOfSolve<float>(memory, order, sides) - call);
    const auto [start, perSide] = line(points);
    m.solveRow = start / order;
    m.solveSingle = double(order) * order / perSide;
    const double wide = secondsOfSolve<double>(memory, order, 1024) - call;
    m.solveDouble = double(order) * order * 1024 / std::max(1e-9, wide - start);
    constexpr double large = 2048, bytes = large * large / 2 * sizeof(float);
    const double vector = secondsOfSolve<float>(memory, int(large), 1) - call;
    m.solveVectorRow = std::max(0., vector - bytes / m.bandwidth.at(bytes)) / large;
}

// --- Panels ----------------------------------------------------------------------------------

// The speed at two heights, made into that of a flat and that of a tall panel.
void addPanel(double width, double low, double lowSpeed, double tall, double tallSpeed,
              BySize& flat, BySize& high) {
    const double slope = (tallSpeed - lowSpeed) / (tall - low);
    flat.points.emplace_back(width, std::max(lowSpeed - slope * low, 0.1 * lowSpeed));
    high.points.emplace_back(width, tallSpeed);
}

// A call on random data, which are as they were before each.
double secondsOfPanel(std::vector<float>& work, const std::vector<float>& data,
                      const std::function<int()>& call) {
    std::vector<double> times;
    for (double spent = 0; times.size() < 8 || (spent < 0.1 && times.size() < 100);) {
        std::copy(data.begin(), data.begin() + std::ptrdiff_t(work.size()), work.begin());
        times.push_back(secondsOf([&] { check(call()); }));
        spent += times.back();
    }
    return *std::min_element(times.begin(), times.end());
}

void measurePanels(Machine& m) {
    constexpr int tall = 4096, low = 512;
    const auto data = randomElements<float>(std::size_t(tall) * 256);
    std::vector<int> pivots(256);
    std::vector<float> t(std::size_t(256) * 256), more(t);
    const auto lu = [&](int rows, int n) {
        std::vector<float> a(std::size_t(rows) * std::size_t(n));
        return secondsOfPanel(
            a, data, [&] { return table().luPanel('S', rows, n, a.data(), rows, pivots.data()); });
    };
    const auto qr = [&](int rows, int n) {
        std::vector<float> a(std::size_t(rows) * std::size_t(n));
        return secondsOfPanel(
            a, data, [&] { return table().qrPanel('S', rows, n, a.data(), rows, t.data(), n); });
    };
    m.panelStart = lu(8, 8);
    m.panelRows = tall;
    for (const double n : {32., 64., 96., 256.}) {
        const auto speed = [&](double rows) {
            return (rows * n * n - n * n * n / 3) / (lu(int(rows), int(n)) - m.panelStart);
        };
        addPanel(n, low, speed(low), tall, speed(tall), m.lu, m.luTall);
    }
    for (const double n : {32., 64., 96.}) {
        const auto speed = [&](double rows) {
            return 2 * rows * n * n / (qr(int(rows), int(n)) - m.panelStart);
        };
        addPanel(n, low, speed(low), tall, speed(tall), m.qr, m.qrTall);
    }
    constexpr int order = 64;
    std::vector<float> a(std::size_t(order) * order);
    const double tail = secondsOfPanel(a, data, [&] {
        return table().bidiagonalTail('S', order, order, a.data(), order, t.data(),
                                      t.data() + order, t.data() + 2 * order, t.data() + 3 * order,
                                      more.data(), int(more.size()));
    });
    m.bidiagonal = 8. / 3 * order * order * order / std::max(1e-9, tail - m.panelStart);
}

}  // namespace

Machine measuredMachine() {
    platform::DeviceProperties p{};
    int device = 0;
    check(table().getDevice(&device));
    check(table().getDeviceProperties(&p, device));
    Machine m{};
    m.name = p.name;
    m.capability = p.major + p.minor / 10.;
    m.memory = double(p.totalGlobalMem);
    m.sharesMemory = table().sharesMemory();
    // A CPU's threads are measured together.
    m.processors = m.sharesMemory ? p.multiProcessorCount : std::max(1, p.multiProcessorCount);
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
