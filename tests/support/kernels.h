// What the tests of device kernels share: operands, sizes, comparison with a formula for every
// element, what was launched, and what was refused.
#pragma once

#include "blas/cublas.h"
#include "common/exceptions.h"
#include "support/arguments.h"
#include "support/machine.h"
#include "support/matrix.h"

namespace test {

// --- Operands ------------------------------------------------------------------------------------

// m x n of NaN: what a kernel misses shows.
template <class T>
Matrix<T> poisoned(int m, int n, int ld = 0) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    return filled(m, n, scalar<T>(nan, nan), ld);
}

// Elements 0, inc, 2 inc, ... as the first row of a matrix whose padding lies between them.
template <class T>
Matrix<T> vectorOf(int n, int inc, unsigned seed = 1) {
    return Matrix<T>::random(1, n, inc, seed);
}

struct Shape {
    int m, n;
};

// More rows, or columns, than one grid of a device with 65535 blocks a dimension takes: what does
// not fit is cut. One element type tells whether the parts are cut right.
template <class T>
std::vector<Shape> beyondOneGrid() {
    constexpr int many = 65535 * 16 + 3;
    if (!std::is_same_v<T, float> || !onSoftwareDevice()) return {};
    return {{many, 2}, {2, many}};
}

// Around the blocks of a GPU (16) and the merged ones of the CPU, tall and wide, and beyond one
// grid.
template <class T>
std::vector<Shape> shapes() {
    std::vector<Shape> all{{1, 1},    {15, 17},   {16, 16},  {17, 15}, {64, 65},
                           {70, 131}, {1025, 18}, {1023, 2}, {3, 1025}};
    for (Shape s : beyondOneGrid<T>()) all.push_back(s);
    return all;
}

// --- Results -------------------------------------------------------------------------------------

// Every element (i, j) on the device is expected(i, j), up to `ulps` units of its own rounding or,
// where it is smaller than that, of the rounding of `unit`. The padding is intact.
template <class T, class F>
void expectElements(const OnDevice<T>& onDevice, const F& expected, double ulps = 0,
                    double unit = 1) {
    const Matrix<T> result = onDevice.download();
    for (int j = 0; j < result.n; ++j)
        for (int i = 0; i < result.m; ++i) {
            const T actual = result(i, j), wanted = expected(i, j);
            if (actual == wanted) continue;
            const double rounding =
                std::numeric_limits<RealOf<T>>::epsilon() * std::max(unit, std::abs(wide(wanted)));
            ASSERT_LE(std::abs(wide(actual) - wide(wanted)), ulps * rounding)
                << "element " << i << ", " << j << " of " << result.m << " x " << result.n << ": "
                << wide(actual) << " instead of " << wide(wanted);
        }
    EXPECT_TRUE(result.paddingUntouched());
}

using lumo::cublas::plain;
template <class T>
using Plain = decltype(plain(T()));

// Operands, on the device and for the CPU.
template <class T>
struct Twins {
    Matrix<T> host;
    OnDevice<T> device;
    Twins(const Matrix<T>& a) : host(a), device(a) {}
    Plain<T>* cpu() { return plain(host.data.data()); }
    T* gpu() { return device.data(); }
    // `unit` as for expectElements.
    void expectSame(double ulps, double unit = 1) { expectElements(device, host, ulps, unit); }
};

// --- Calls ---------------------------------------------------------------------------------------

using Names = std::vector<std::string>;

// The calls that f makes, each as `text` puts it; those without a text are of no interest.
template <class F, class Text>
Names callsBy(F f, Text text) {
    Names texts;
    for (const software::Call& call : traceOf(f))
        if (const std::string t = text(call); !t.empty()) texts.push_back(t);
    return texts;
}

// The kernels that f launches, by the names of the trace, in order.
template <class F>
Names launchedBy(F f) {
    return callsBy(f, [](const software::Call& call) {
        return call.name == "cudaLaunch" ? call.arguments.at(0) : "";
    });
}

// "size@offset" of every argument that f pushes.
template <class F>
Names argumentsPushedBy(F f) {
    return callsBy(f, [](const software::Call& call) {
        return call.name == "cudaSetupArgument" ? call.arguments.at(0) + "@" + call.arguments.at(1)
                                                : "";
    });
}

// The argument error that f raises, before it launches anything; 0 if it raises none.
template <class F>
int argumentError(F f) {
    int info = 0;
    const Names launched = launchedBy([&] {
        try {
            f();
        } catch (const lumo::InfoException& e) {
            EXPECT_EQ(lumoArgumentError, e.status());
            info = e.info();
        }
    });
    EXPECT_TRUE(info == 0 || launched.empty());
    return info;
}

// The launcher looks at its arguments, counted from 1, in this order.
template <class... A>
void expectChecks(void (*launcher)(A...), const std::vector<int>& order,
                  const ArgumentsOf<A...>& bad, const ArgumentsOf<A...>& good) {
    for (const auto& check : checksInOrder(order, bad, good))
        EXPECT_EQ(check.first, argumentError([&] { std::apply(launcher, check.second); }));
}

}  // namespace test
