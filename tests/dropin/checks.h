// What the programs under the drop-in library check their results by. Included once a program.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <limits>
#include <vector>

namespace {

int failures = 0;

void check(bool good, const char* what) {
    if (good) return;
    std::printf("not so: %s\n", what);
    ++failures;
}
#define CHECK(condition) check(condition, #condition)

template <class T>
std::vector<T> noise(int count, unsigned seed = 1) {
    std::vector<T> values(count);
    for (T& value : values) {
        seed = seed * 1664525u + 1013904223u;
        value = T(float(seed >> 8) / (1 << 23) - 1);
    }
    return values;
}

// The largest | B - A X | over n ||A|| ||X|| eps, in double precision, A of order n, one column.
template <class T>
double residual(int n, const std::vector<T>& a, const std::vector<T>& x, const std::vector<T>& b) {
    using Wide = std::complex<double>;
    double worst = 0, norm = 0, size = 0;
    for (int i = 0; i < n; ++i) {
        Wide sum = -Wide(b[i]);
        double row = 0;
        for (int j = 0; j < n; ++j) {
            sum += Wide(a[i + std::size_t(j) * n]) * Wide(x[j]);
            row += std::abs(a[i + std::size_t(j) * n]);
        }
        worst = std::max(worst, std::abs(sum));
        norm = std::max(norm, row);
        size = std::max(size, double(std::abs(x[i])));
    }
    return worst / (norm * size * std::numeric_limits<float>::epsilon());
}

}  // namespace
