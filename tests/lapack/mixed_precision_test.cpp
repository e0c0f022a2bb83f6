// dsgesv and zcgesv through the harness.
#include "lapack/lu.h"

namespace test {
namespace {

// LAPACK's test of a refined solution (xGET08): ||B - A X|| in the infinity norm.
template <class T>
double residual(const Matrix<T>& a, const Matrix<T>& x, const Matrix<T>& b) {
    const WideMatrix r = WideMatrix(a) * WideMatrix(x) - WideMatrix(b);
    double worst = 0, norm = norm1(op('T', WideMatrix(a)));
    for (int j = 0; j < b.n; ++j) {
        double largestR = 0, largestX = 0;
        for (int i = 0; i < b.m; ++i) {
            largestR = larger(largestR, std::abs(r(i, j)));
            largestX = larger(largestX, std::abs(wide(x(i, j))));
        }
        worst = larger(worst, largestR / (norm * largestX * std::sqrt(b.m) * epsilon<T>));
    }
    return worst;
}

// `steps`: a number of steps that need not be exact, or why there are none.
template <class T>
auto dsgesvCall(const Matrix<T>& a, const Matrix<T>& b, int steps, Interface where) {
    auto check = [=](auto, auto, const Operand<T>& factors, const Operand<int>& ipiv,
                     const Operand<T>& rhs, const Operand<T>& x, const Operand<int>& iter) {
        const int taken = iter.now()(0, 0);
        EXPECT_TRUE(steps < 0 ? taken == steps : taken >= 0 && taken < 10) << taken;
        EXPECT_TRUE(rhs.untouched());
        if (taken >= 0)
            EXPECT_TRUE(factors.untouched());
        else
            checkFactors(factors, ipiv);
        EXPECT_LT(residual(a, x.now(), b), 5);
        for (int pivot : ipiv.now().data) EXPECT_TRUE(pivot >= 1 && pivot <= a.n);
    };
    return routineCall<T>(
        where, [](auto e) { return e.dsgesv; }, check, a.n, b.n, a, Adjacent<int>{blank<int>(a.n)},
        b, blank<T>(b.m, b.n, b.m + 1), Adjacent<int>{blank<int>(1)});
}

// A matrix that single precision cannot do: too large (-2), a column lost by underflow (-3), two
// rows that differ too little (-31).
template <class T>
Matrix<T> hard(int n, int why) {
    auto a = Matrix<T>::random(n, n, n + 1);
    if (why == -2) a(1, 0) = scalar<T>(1e39);
    for (int k = 0; k < n; ++k) {
        if (why == -3) a(k, 2) = T(1e-60) * a(k, 2);
        if (why == -31) a(n - 1, k) = T(0.3) * (a(0, k) + a(1, k)) + T(k == 1 ? 1e-12 : 0);
    }
    return a;
}

template <class T>
void failing() {
    auto a = Matrix<T>::random(9, 9);
    for (int i = 0; i < 9; ++i) a(i, 4) = T(0);
    auto call = dsgesvCall(a, Matrix<T>::random(9, 2), -3, inHost);
    EXPECT_EQ(Outcome(lumoDataError, 5), outcome(call->run()));
    auto infinite = Matrix<T>::random(9, 9);
    infinite(3, 3) = scalar<T>(std::nan(""));
    auto other = dsgesvCall(infinite, Matrix<T>::random(9, 1), -2, inHost);
    other->run();
    EXPECT_TRUE(std::isnan(norm1(WideMatrix(other->template result<5>()))));
}

template <class T>
void add(const std::string& name) {
    auto easy = [](int n, int nrhs, Interface i) {
        return dsgesvCall(Matrix<T>::random(n, n, n + 2), Matrix<T>::random(n, nrhs, n + 3, 2), 1,
                          i);
    };
    auto tough = [](int n, int why, Interface i) {
        return dsgesvCall(hard<T>(n, why), Matrix<T>::random(n, 2), why, i);
    };
    registerRoutine({name,
                     casesOf("easy", {{1, 1}, {8, 3}, {40, 1}, {33, 20}, {300, 2}, {5, 0}}, easy) +
                         casesOf("hard", {{20, -2}, {20, -3}, {20, -31}}, tough),
                     failing<T>,
                     casesOf("easy", {{6, 2}}, easy) + casesOf("hard", {{6, -3}}, tough), true,
                     shrinkLu<T>, true});
}

const bool registered = [] {
    add<double>("dsgesv");
    add<lumo::Complex<double>>("zcgesv");
    return true;
}();

}  // namespace
}  // namespace test
