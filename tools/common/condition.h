// How near a square matrix is to a singular one, estimated from its LU factors by the CPU LAPACK.
#pragma once

#include <cmath>
#include <vector>

#include "platform/cpu/lapack.h"
#include "platform/matrix.h"
#include "residual.h"

namespace lumo {

// The 1-norm of an n x n matrix; not a number if an element is not.
template <class T>
double oneNorm(int n, const T* a, int lda) {
    double norm = 0;
    for (int j = 0; j < n; ++j) {
        double sum = 0;
        for (int i = 0; i < n; ++i) sum += magnitude(*platform::at(a, lda, i, j));
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
    using Real = platform::RealOf<T>;
    // The norm of A may overflow in single precision: it is divided by here.
    Real ofInverse = 0;
    std::vector<T> work(4 * std::size_t(n));
    std::vector<std::conditional_t<platform::isComplex<T>, Real, int>> others(2 * std::size_t(n));
    cpu::gecon<T>('1', n, factors, lda, 1, &ofInverse, work.data(), others.data());
    return ofInverse / normOfA;
}

}  // namespace lumo
