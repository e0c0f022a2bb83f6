// How well X solves A X = B.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <vector>

namespace lumo {

template <class T>
constexpr bool isComplexNumber = !std::is_floating_point_v<T>;

// The largest of ||b - A x|| / (||A|| ||x|| eps n) over the columns of B and X, in 1-norms and
// with single precision's eps, as the LAPACK testers measure it (theirs lacks the n): of order 1
// for a backward stable solver, a small fraction of it for a typical matrix. Computed in double;
// A and B may be more precise than X. Matrices are column-major without padding.
template <class A, class X>
double scaledResidual(int n, int nrhs, const A* a, const A* b, const X* x) {
    using Wide = std::conditional_t<isComplexNumber<A>, std::complex<double>, double>;
    const auto sumOfMagnitudes = [n](const auto* v) {
        double sum = 0;
        for (int i = 0; i < n; ++i) sum += std::abs(Wide(v[i]));
        return sum;
    };
    double normOfA = 0;
    for (int j = 0; j < n; ++j)
        normOfA = std::fmax(normOfA, sumOfMagnitudes(a + std::size_t(j) * n));

    const double eps = std::numeric_limits<float>::epsilon() / 2;
    double worst = 0;
    std::vector<Wide> r(n);
    for (int k = 0; k < nrhs; ++k) {
        const A* bk = b + std::size_t(k) * n;
        const X* xk = x + std::size_t(k) * n;
        for (int i = 0; i < n; ++i) r[i] = Wide(bk[i]);
        for (int j = 0; j < n; ++j) {
            const A* column = a + std::size_t(j) * n;
            const Wide xj = Wide(xk[j]);
            for (int i = 0; i < n; ++i) r[i] -= Wide(column[i]) * xj;
        }
        const double error = sumOfMagnitudes(r.data());
        // Not std::max: a NaN must come through, and 0 / 0 is a perfect zero solution.
        const double ratio = error == 0 ? 0 : error / (normOfA * sumOfMagnitudes(xk) * eps * n);
        if (!(ratio <= worst)) worst = ratio;
    }
    return worst;
}

}  // namespace lumo
