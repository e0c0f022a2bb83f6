// Calls of getrf and gesv.
#pragma once

#include <climits>

#include "lapack/gesv.h"
#include "lapack/getrf.h"
#include "lapack/operands_call.h"
#include "lapack/tuning.h"

namespace test {

// Panels of 8 columns by the CPU, and the transposed path from order 20 on.
template <class T, int thereFrom = INT_MAX>
std::shared_ptr<void> shrinkLu() {
    return together(temporarily(lumo::getrfTuning<T>, {{4, 4}, 20}),
                    temporarily(lumo::luPanels<T>, {4, {{{1, 8, thereFrom}}}}));
}

// The same with the device's own panels where it can, by strips of 4 columns.
template <class T>
std::shared_ptr<void> shrinkLuThere() {
    return shrinkLu<T, 70>();
}

template <class T>
void checkFactors(const Operand<T>& a, const Operand<int>& ipiv) {
    const std::vector<int> pivots = ipiv.now().data;
    for (int i = 0; i < int(pivots.size()); ++i) {
        ASSERT_GE(pivots[i], i + 1);
        ASSERT_LE(pivots[i], a.before.m);
    }
    EXPECT_LT(luResidual(a.before, a.now(), pivots), luBound);
}

template <class T>
auto getrfCall(const Matrix<T>& a, Interface where) {
    auto check = [](auto, auto, const Operand<T>& factors, const Operand<int>& ipiv) {
        checkFactors(factors, ipiv);
    };
    return routineCall<T>(
        where, [](auto e) { return e.getrf; }, check, a.m, a.n, a,
        Adjacent<int>{blank<int>(std::min(a.m, a.n))});
}

// The pivots of gesv are always in host memory, those of getrf where the matrix is.
template <class T>
auto gesvCall(const Matrix<T>& a, const Matrix<T>& b, Interface where) {
    auto check = [](auto, auto, const Operand<T>& factors, const Operand<int>& ipiv,
                    const Operand<T>& x) {
        checkFactors(factors, ipiv);
        EXPECT_LT(solveResidual(factors.before, x.now(), x.before), solveBound);
    };
    return routineCall<T>(
        where, [](auto e) { return e.gesv; }, check, a.n, b.n, a,
        Adjacent<int>{blank<int>(a.n), true}, b);
}
template <class T>
auto gesvCall(int n, int nrhs, int pad, Interface where) {
    return gesvCall(Matrix<T>::random(n, n, n + pad), Matrix<T>::random(n, nrhs, n + 2 * pad, 2),
                    where);
}

}  // namespace test
