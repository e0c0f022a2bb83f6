// Symmetric and Hermitian eigenproblems.
#pragma once

#include "lapack/orthogonal.h"
#include "lapack/tuning.h"

namespace test {

constexpr double eigenBound = 50;  // LAPACK sep.in: xSYT21, xDRVST

// Panels of 4 columns, blocks of 3 rows.
template <class T>
std::shared_ptr<void> shrinkBlocks() {
    using Restored = std::shared_ptr<void>;
    return std::make_shared<std::array<Restored, 4>>(
        std::array<Restored, 4>{temporarily(lumo::sytrdTuning<T>, {4, 4}), shrinkPanels<T>(),
                                temporarily(lumo::stedcLeaf, 3), temporarily(lumo::sygstLeaf, 3)});
}

// Not a number where nobody is to look: in the other triangle, and as the diagonal's imaginary
// part.
template <class T>
Matrix<T> stored(char uplo, Matrix<T> a) {
    const double nan = std::nan("");
    for (int j = 0; j < a.n; ++j) {
        for (int i = 0; i < a.n; ++i)
            if (!inTriangle(uplo, i, j)) a(i, j) = scalar<T>(nan, nan);
        a(j, j) = scalar<T>(wide(a(j, j)).real(), nan);
    }
    return a;
}

// Those of A + c I are singular values, if c is as large as A.
inline std::vector<double> referenceValues(const WideMatrix& a) {
    const int n = a.n;
    const double shift = norm1(a);
    WideMatrix shifted = a;
    for (int i = 0; i < n; ++i) shifted(i, i) += shift;
    std::vector<double> s(n), rwork(5 * n);
    Wide unused;
    cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
        return cpu::gesvd<Wide>('N', 'N', n, n, shifted.data.data(), n, s.data(), &unused, 1,
                                &unused, 1, work, size, rwork.data());
    });
    std::reverse(s.begin(), s.end());
    for (double& x : s) x -= shift;
    return s;
}

}  // namespace test
