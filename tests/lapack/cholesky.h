// Positive definite matrices and their factors.
#pragma once

#include "platform/cpu/lapack.h"
#include "residuals.h"

namespace test {

// Of condition 10 or so.
template <class T>
Matrix<T> positiveDefinite(int n, int ld = 0) {
    const WideMatrix g(Matrix<T>::random(n, n));
    WideMatrix a = hermitian('L', g * op('C', g));
    for (int i = 0; i < n; ++i) a(i, i) += 0.1 * n;
    return narrowed<T>(a, ld);
}

// The factor in the triangle `uplo`, and what no number is in the other one.
template <class T>
Matrix<T> choleskyFactor(char uplo, const Matrix<T>& a) {
    WideMatrix f(a);
    EXPECT_EQ(0, cpu::potrf<Wide>(uplo, a.n, f.data.data(), a.n));
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.n; ++i)
            if (!inTriangle(uplo, i, j)) f(i, j) = std::nan("");
    return narrowed<T>(f, a.n + 1);
}

}  // namespace test
