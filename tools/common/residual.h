// How well X solves A X = B, in units of X's precision. Computed in double; A and B may be more
// precise than X. Matrices are column-major without padding.
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

// The double-precision numbers of T's kind.
template <class T>
using WideOf = std::conditional_t<isComplexNumber<T>, std::complex<double>, double>;

// LAPACK's eps of T's precision.
template <class T>
constexpr double epsOf = std::numeric_limits<decltype(std::abs(T()))>::epsilon() / 2;

// What norms are summed and multiplied in: the squares of double precision's numbers leave its
// range.
using Wider = long double;

template <class T>
Wider squareOf(T x) {
    if constexpr (isComplexNumber<T>)
        return squareOf(x.real()) + squareOf(x.imag());
    else
        return Wider(x) * Wider(x);
}

// |x|. In single precision without std::abs's care for the range, which double does not need.
template <class T>
double magnitude(T x) {
    if constexpr (std::is_same_v<T, std::complex<float>>)
        return std::sqrt(std::norm(WideOf<T>(x)));
    else
        return std::abs(x);
}

// b - A x for an m x n matrix A and one right-hand side.
template <class A, class X>
std::vector<WideOf<A>> residualOf(int m, int n, const A* a, const A* b, const X* x) {
    using Wide = WideOf<A>;
    std::vector<Wide> r(b, b + m);
    for (int j = 0; j < n; ++j) {
        const A* column = a + std::size_t(j) * m;
        const Wide xj = Wide(x[j]);
        for (int i = 0; i < m; ++i) r[i] -= Wide(column[i]) * xj;
    }
    return r;
}

template <class T>
double sumOfMagnitudes(std::size_t count, const T* v) {
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += magnitude(v[i]);
    return sum;
}

// The 2-norm of a vector, the Frobenius norm of a matrix.
template <class T>
double euclideanNorm(std::size_t count, const T* v) {
    Wider sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += squareOf(v[i]);
    return double(std::sqrt(sum));
}

// The larger one; not a number as soon as either is not.
inline double larger(double a, double b) {
    return a >= b || std::isnan(a) ? a : b;
}

// The largest of ||b - A x|| / (||A|| ||x|| eps max(m, n)) over the columns of B and X, in 1-norms
// and with the eps of X's precision, as the LAPACK testers measure it (xGET02 lacks the max(m, n)):
// of order 1 for a backward stable solver, a small fraction of it for a typical matrix.
template <class A, class X>
double scaledResidual(int m, int n, int nrhs, const A* a, const A* b, const X* x) {
    double normOfA = 0;
    for (int j = 0; j < n; ++j)
        normOfA = std::fmax(normOfA, sumOfMagnitudes(m, a + std::size_t(j) * m));
    double worst = 0;
    for (int k = 0; k < nrhs; ++k) {
        const X* xk = x + std::size_t(k) * n;
        const auto r = residualOf(m, n, a, b + std::size_t(k) * m, xk);
        const double error = sumOfMagnitudes(r.size(), r.data());
        const Wider gauge = Wider(normOfA) * sumOfMagnitudes(n, xk) * epsOf<X> * std::max(m, n);
        // 0 / 0: a perfect zero solution
        worst = larger(worst, error == 0 ? 0 : double(error / gauge));
    }
    return worst;
}

// How far x is from minimising ||b - A x||, where the residual r is orthogonal to A's columns:
// ||A^H r|| / (||A|| (||b|| + ||A|| ||x||) eps), in 2-norms (Frobenius for A); of order 1 at most
// for a backward stable solver, however ill-conditioned A is. (The LAPACK testers' xQRT17 has ||b||
// alone in the parentheses, and a max(m, n) that lets a thousandfold error pass for a tall matrix.)
template <class A, class X>
double distanceFromOptimum(int m, int n, const A* a, const A* b, const X* x,
                           const std::vector<WideOf<A>>& r) {
    const double normOfR = euclideanNorm(m, r.data());
    if (normOfR == 0) return 0;
    std::vector<WideOf<A>> unit = r;  // whose products with A cannot leave the range
    for (WideOf<A>& element : unit) element /= normOfR;
    Wider sum = 0;
    for (int j = 0; j < n; ++j) {
        const A* column = a + std::size_t(j) * m;
        WideOf<A> product = 0;
        for (int i = 0; i < m; ++i)
            if constexpr (isComplexNumber<A>)
                product += std::conj(WideOf<A>(column[i])) * unit[i];
            else
                product += WideOf<A>(column[i]) * unit[i];
        sum += squareOf(product);
    }
    if (sum == 0) return 0;
    const Wider normOfA = euclideanNorm(std::size_t(m) * n, a);
    const Wider gauge = euclideanNorm(m, b) + normOfA * euclideanNorm(n, x);
    return double(std::sqrt(sum) * normOfR / (normOfA * gauge * epsOf<X>));
}

}  // namespace lumo
