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

// Only the triangle `uplo` has been read and written.
template <class T>
void checkFactor(char uplo, const Operand<T>& a) {
    const Matrix<T> after = a.now();
    const WideMatrix f = triangular(uplo, 'N', WideMatrix(after));
    const WideMatrix product = uplo == 'U' ? op('C', f) * f : f * op('C', f);
    const WideMatrix before = hermitian(uplo, WideMatrix(a.before));
    EXPECT_LT(norm1(product - before) / (after.n * norm1(before) * epsilon<T>), luBound);
    for (int j = 0; j < after.n; ++j)
        for (int i = 0; i < after.n; ++i)
            EXPECT_TRUE(inTriangle(uplo, i, j) || std::isnan(wide(after(i, j)).real()));
}

}  // namespace test
