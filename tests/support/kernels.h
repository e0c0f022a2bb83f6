// What the tests of device kernels share: what was launched, what was refused, and comparison
// with a formula for every element.
#pragma once

#include "runtime/exceptions.h"
#include "support/machine.h"
#include "support/matrix.h"

namespace test {

// The kernels that f launches, by the names of the trace, in order.
template <class F>
std::vector<std::string> launchedBy(F f) {
    software::startTrace();
    f();
    std::vector<std::string> kernels;
    for (const software::Call& call : software::stopTrace())
        if (call.name == "cudaLaunch") kernels.push_back(call.arguments.at(0));
    return kernels;
}

// "size@offset" of every argument that f pushes.
template <class F>
std::vector<std::string> argumentsPushedBy(F f) {
    software::startTrace();
    f();
    std::vector<std::string> arguments;
    for (const software::Call& call : software::stopTrace())
        if (call.name == "cudaSetupArgument")
            arguments.push_back(call.arguments.at(0) + "@" + call.arguments.at(1));
    return arguments;
}

using Names = std::vector<std::string>;

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

template <class T>
bool close(T x, T y, double ulps) {
    const double scale = std::max(1.0, std::abs(wide(y)));
    return std::abs(wide(x) - wide(y)) <= ulps * scale * std::numeric_limits<RealOf<T>>::epsilon();
}

// Every element (i, j) is expected(i, j), up to `ulps` units of rounding; the padding is intact.
template <class T, class F>
void expectElements(const Matrix<T>& result, F expected, double ulps = 0) {
    for (int j = 0; j < result.n; ++j)
        for (int i = 0; i < result.m; ++i) {
            const T wanted = expected(i, j);
            ASSERT_TRUE(result(i, j) == wanted || close(result(i, j), wanted, ulps))
                << "element " << i << ", " << j << " of " << result.m << " x " << result.n << ": "
                << wide(result(i, j)) << " instead of " << wide(wanted);
        }
    EXPECT_TRUE(result.paddingUntouched());
}

// m x n of NaN: what a kernel misses shows.
template <class T>
Matrix<T> poisoned(int m, int n, int ld = 0) {
    Matrix<T> a(m, n, ld);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) a(i, j) = scalar<T>(nan, nan);
    return a;
}

// Elements 0, inc, 2 inc, ... as the first row of a matrix whose padding lies between them.
template <class T>
Matrix<T> vectorOf(int n, int inc, unsigned seed = 1) {
    return Matrix<T>::random(1, n, inc, seed);
}

struct Shape {
    int m, n;
};
// Around the blocks of a GPU (16) and the merged ones of the CPU, tall and wide.
constexpr Shape shapes[] = {{1, 1},    {15, 17},   {16, 16},  {17, 15},
                            {70, 131}, {1025, 18}, {1023, 2}, {3, 1025}};
// More rows, or columns, than one grid of a device with 65535 blocks a dimension takes.
constexpr int beyondOneGrid = 65535 * 16 + 3;

}  // namespace test
