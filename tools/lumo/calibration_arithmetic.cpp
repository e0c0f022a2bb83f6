// Products, triangular solves and panels.
#include <algorithm>

#include "micro_measurement.h"

namespace lumo::micro {

using timeline::BySize;
using timeline::Machine;

namespace {

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

template <class T>
double secondsOfGemm(const DeviceMemory& x, int m, int n, int k) {
    T* const a = reinterpret_cast<T*>(x.get());
    return secondsOfDevice([&] {
        table().platform::Blas<T>::gemm('N', 'N', m, n, k, T(1), a, m, a, k, T(1),
                                        a + std::size_t(2048) * 1024, m);
    });
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

}  // namespace

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

}  // namespace lumo::micro
