// How near a square matrix is to a singular one, estimated from its LU factors by the CPU LAPACK.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "residual.h"

extern "C" {
void sgecon_(const char* norm, const int* n, const float* a, const int* lda, const float* anorm,
             float* rcond, float* work, int* iwork, int* info, std::size_t);
void cgecon_(const char* norm, const int* n, const std::complex<float>* a, const int* lda,
             const float* anorm, float* rcond, std::complex<float>* work, float* rwork, int* info,
             std::size_t);
}

namespace lumo {

// The 1-norm of an n x n matrix; not a number if an element is not. T: float or
// std::complex<float>.
template <class T>
double oneNorm(int n, const T* a, int lda) {
    double norm = 0;
    for (int j = 0; j < n; ++j) {
        const T* column = a + std::size_t(j) * std::size_t(lda);
        double sum = 0;
        for (int i = 0; i < n; ++i) sum += std::sqrt(std::norm(WideOf<T>(column[i])));
        norm = larger(norm, sum);
    }
    return norm;
}

// 1 / (||A|| ||inverse of A||), from 0 to 1, in 1-norms: LAPACK takes a matrix for singular to
// working precision if it is less than eps. Not a number if the norm is not finite.
template <class T>
double reciprocalCondition(int n, const T* factors, int lda, double normOfA) {
    if (n == 0) return 1;
    if (!std::isfinite(normOfA)) return std::nan("");
    // The norm of A may overflow in single precision: it is divided by here.
    const float one = 1;
    float ofInverse = 0;
    int info = 0;
    std::vector<T> work(4 * std::size_t(n));
    if constexpr (!isComplexNumber<T>) {
        std::vector<int> iwork(std::size_t(n), 0);
        sgecon_("1", &n, factors, &lda, &one, &ofInverse, work.data(), iwork.data(), &info, 1);
    } else {
        std::vector<float> rwork(2 * std::size_t(n));
        cgecon_("1", &n, factors, &lda, &one, &ofInverse, work.data(), rwork.data(), &info, 1);
    }
    return ofInverse / normOfA;
}

}  // namespace lumo
