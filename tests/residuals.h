// Scaled residuals in the form of the LAPACK testers: a correct result stays below a small bound
// whatever its size, and two correct results need not agree in any element.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <vector>

#include "platform/cpu/blas.h"
#include "support/matrix.h"

namespace test {

// Bounds of the LAPACK testers' standard input files (lin_s.in, lin_c.in).
constexpr double luBound = 30;     // LAPACK xGET01
constexpr double solveBound = 30;  // LAPACK xGET02
constexpr double svdBound = 50;    // LAPACK svd.in: xBDT01, xBDT03, xORT01, xDRVBD
constexpr double blasBound = 16;   // reference BLAS testers (sblat3.in, ...)

using Wide = std::complex<double>;

// Twice the memory asked for: OpenBLAS's gemv reads, and does not use, a column behind a matrix.
template <class T>
struct Roomy : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = Roomy<U>;
    };
    T* allocate(std::size_t count) { return std::allocator<T>::allocate(2 * count + 1); }
    void deallocate(T* p, std::size_t count) { std::allocator<T>::deallocate(p, 2 * count + 1); }
};

// A dense matrix to compute with, its leading dimension the number of rows.
struct WideMatrix {
    int m, n;
    std::vector<Wide, Roomy<Wide>> data;
    WideMatrix(int m_, int n_) : m(m_), n(n_), data(std::size_t(m_) * n_) {}
    // Of elements f(i, j).
    template <class F>
    WideMatrix(int m_, int n_, F f) : WideMatrix(m_, n_) {
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) (*this)(i, j) = f(i, j);
    }
    template <class T>
    explicit WideMatrix(const Matrix<T>& a)
        : WideMatrix(a.m, a.n, [&](int i, int j) { return wide(a(i, j)); }) {}
    Wide& operator()(int i, int j) { return data[std::size_t(j) * m + i]; }
    const Wide& operator()(int i, int j) const { return data[std::size_t(j) * m + i]; }
};

inline WideMatrix operator*(const WideMatrix& a, const WideMatrix& b) {
    WideMatrix c(a.m, b.n);
    if (a.m == 0 || b.n == 0) return c;
    cpu::gemm<Wide>('N', 'N', a.m, b.n, a.n, 1, a.data.data(), std::max(1, a.m), b.data.data(),
                    std::max(1, b.m), 0, c.data.data(), std::max(1, c.m));
    return c;
}

inline WideMatrix operator-(WideMatrix a, const WideMatrix& b) {
    for (std::size_t i = 0; i < a.data.size(); ++i) a.data[i] -= b.data[i];
    return a;
}

// The transpose for "T", the conjugate transpose for "C", the matrix itself for "N".
inline WideMatrix op(char letter, const WideMatrix& a) {
    if (letter == 'N') return a;
    return {a.n, a.m, [&](int i, int j) { return letter == 'C' ? std::conj(a(j, i)) : a(j, i); }};
}

inline bool inTriangle(char uplo, int i, int j) {
    return uplo == 'L' ? i >= j : i <= j;
}

// The whole Hermitian (if real: symmetric) matrix of which one triangle is stored.
inline WideMatrix hermitian(char uplo, const WideMatrix& a) {
    return {a.m, a.n, [&](int i, int j) {
                if (i == j) return Wide(a(i, i).real());
                return inTriangle(uplo, i, j) ? a(i, j) : std::conj(a(j, i));
            }};
}

// The triangular matrix, with zeros and, for diag "U", ones where nothing is stored.
inline WideMatrix triangular(char uplo, char diag, const WideMatrix& a) {
    return {a.m, a.n, [&](int i, int j) {
                if (i == j && diag == 'U') return Wide(1);
                return inTriangle(uplo, i, j) ? a(i, j) : Wide(0);
            }};
}

// Rounded to the elements of a test.
template <class T>
Matrix<T> narrowed(const WideMatrix& a, int ld = 0) {
    Matrix<T> b(a.m, a.n, ld);
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.m; ++i) b(i, j) = scalar<T>(a(i, j).real(), a(i, j).imag());
    return b;
}

// The first m rows and n columns.
template <class M>
WideMatrix leading(const M& a, int m, int n) {
    return {m, n, [&](int i, int j) { return wide(a(i, j)); }};
}

// |re| + |im| of each element.
inline WideMatrix magnitudes(WideMatrix a) {
    for (Wide& x : a.data) x = std::abs(x.real()) + std::abs(x.imag());
    return a;
}

// The larger one; not a number as soon as either is not.
inline double larger(double a, double b) {
    return a >= b || std::isnan(a) ? a : b;
}

// A sum of matrix products in double precision, and what its rounding errors are measured by: the
// same sum of the magnitudes (the gauge of xMMCH in the reference BLAS testers).
class ProductSum {
  public:
    ProductSum(Wide beta, const WideMatrix& c) : value_(c.m, c.n), gauge_(c.m, c.n) {
        if (beta != 0.0) accumulate(beta, c, magnitudes(c));
    }
    ProductSum& add(Wide alpha, const WideMatrix& x, const WideMatrix& y) {
        accumulate(alpha, x * y, magnitudes(x) * magnitudes(y));
        return *this;
    }
    // The largest |value - actual| / (gauge eps) of the elements that `compared` tells.
    template <class Compared>
    double ratio(const WideMatrix& actual, double eps, Compared compared) const {
        double worst = 0;
        for (int j = 0; j < actual.n; ++j)
            for (int i = 0; i < actual.m; ++i) {
                const double error = std::abs(value_(i, j) - actual(i, j));
                if (!compared(i, j) || error == 0) continue;
                worst = larger(worst, error / (gauge_(i, j).real() * eps));
            }
        return worst;
    }

  private:
    void accumulate(Wide factor, const WideMatrix& x, const WideMatrix& size) {
        const double magnitude = std::abs(factor.real()) + std::abs(factor.imag());
        for (std::size_t i = 0; i < x.data.size(); ++i) {
            value_.data[i] += factor * x.data[i];
            gauge_.data[i] += magnitude * size.data[i];
        }
    }

    WideMatrix value_, gauge_;
};

// The sum of column j's magnitudes, and the largest one. Not a number if any element is not.
inline double columnNorm(const WideMatrix& a, int j) {
    double sum = 0;
    for (int i = 0; i < a.m; ++i) sum += std::abs(a(i, j));
    return sum;
}
inline double norm1(const WideMatrix& a) {
    double largest = 0;
    for (int j = 0; j < a.n; ++j) largest = larger(largest, columnNorm(a, j));
    return largest;
}

template <class T>
constexpr double epsilon = std::numeric_limits<RealOf<T>>::epsilon() / 2;  // as xLAMCH("E")

// ||P L U - A|| / (n ||A|| eps) for the factors and 1-based pivots that getrf left.
template <class T>
double luResidual(const Matrix<T>& a, const Matrix<T>& factors, const std::vector<int>& ipiv) {
    const int k = std::min(a.m, a.n);
    WideMatrix product = triangular('L', 'U', leading(factors, a.m, k)) *
                         triangular('U', 'N', leading(factors, k, a.n));
    for (int i = k - 1; i >= 0; --i)
        for (int j = 0; j < a.n; ++j) std::swap(product(i, j), product(ipiv[i] - 1, j));
    const WideMatrix original(a);
    return norm1(product - original) / (a.n * norm1(original) * epsilon<T>);
}

// max over right-hand sides of ||b - A x|| / (||A|| ||x|| eps).
template <class T>
double solveResidual(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) {
    const WideMatrix wideA(a), wideX(x), r = wideA * wideX - WideMatrix(b);
    double worst = 0;
    for (int j = 0; j < b.n; ++j)
        worst = larger(worst, columnNorm(r, j) / (norm1(wideA) * columnNorm(wideX, j)));
    return worst / epsilon<T>;
}

}  // namespace test
