// What is done with factors: getrs, potrs, orgqr, ormqr, gecon, pocon.
#include "lapack/cholesky.h"
#include "lapack/operands_call.h"
#include "lapack/orthogonal.h"

namespace test {
namespace {

// A random matrix, its LU factors and pivots, and || A || || A^-1 || in a norm.
template <class T>
struct Factorized {
    Matrix<T> a, factors;
    Matrix<int> ipiv;

    explicit Factorized(int n) : a(Matrix<T>::random(n, n)), factors(a), ipiv(n, 1) {
        WideMatrix lu(a);
        EXPECT_EQ(0, cpu::getrf<Wide>(n, n, lu.data.data(), n, ipiv.data.data()));
        factors = narrowed<T>(lu, n + 2);
    }
};

// The reciprocal condition number in the 1-norm, or of rows in the infinity norm.
double reciprocalCondition(WideMatrix a, bool rows) {
    if (rows) a = op('T', a);
    WideMatrix lu = a, inverse = identity(a.m);
    std::vector<int> ipiv(a.m);
    cpu::gesv<Wide>(a.m, a.m, lu.data.data(), a.m, ipiv.data(), inverse.data.data(), a.m);
    return 1 / (norm1(a) * norm1(inverse));
}

template <class T>
auto getrsCall(char trans, int n, int nrhs, Interface where) {
    const Factorized<T> f(n);
    auto check = [a = f.a](const auto& letter, auto, auto, auto&, auto&, const Operand<T>& x) {
        EXPECT_LT(solveResidual(narrowed<T>(op(char(letter), WideMatrix(a))), x.now(), x.before),
                  solveBound);
    };
    return routineCall<T>(
        where, [](auto e) { return e.getrs; }, check, trans, n, nrhs, f.factors,
        Adjacent<int>{f.ipiv}, Matrix<T>::random(n, nrhs, n + 1, 2));
}

template <class T>
void getrsFailing() {
    for (int wrong : {0, 8, -1}) {
        Factorized<T> f(7);
        f.ipiv(4, 0) = wrong;
        auto call = routineCall<T>(
            inHost, [](auto e) { return e.getrs; }, [](auto&...) {}, 'N', 7, 2, f.factors,
            Adjacent<int>{f.ipiv}, Matrix<T>::random(7, 2));
        EXPECT_EQ(Outcome(lumoArgumentError, -6), outcome(call->run()));
        EXPECT_TRUE(call->untouched());
    }
}

template <class T>
auto potrsCall(char uplo, int n, int nrhs, Interface where) {
    const auto a = positiveDefinite<T>(n);
    auto check = [a](auto, auto, auto, auto&, const Operand<T>& x) {
        EXPECT_LT(solveResidual(a, x.now(), x.before), solveBound);
    };
    return routineCall<T>(
        where, [](auto e) { return e.potrs; }, check, uplo, n, nrhs, choleskyFactor(uplo, a),
        Matrix<T>::random(n, nrhs, n + 1, 2));
}

// Reflectors of a random order x k matrix, and Q as a matrix of that order.
template <class T>
struct Reflected {
    Matrix<T> factors, tau;
    WideMatrix q{0, 0};

    Reflected(int order, int k) : factors(order, k), tau(k, 1) {
        WideMatrix f(Matrix<T>::random(order, k)), t(k, 1);
        cpu::withWorkspace<Wide>(1, [&](Wide* work, int size) {
            return cpu::geqrf<Wide>(order, k, f.data.data(), order, t.data.data(), work, size);
        });
        factors = narrowed<T>(f, order + 1);
        tau = narrowed<T>(t);
        q = qOf(lumo::Reflectors::ofQr, factors, tau);
    }
};

template <class T>
auto orgqrCall(int m, int n, int k, Interface where) {
    const Reflected<T> r(m, k);
    Matrix<T> a = Matrix<T>::random(m, n, m + 3);
    for (int j = 0; j < k; ++j)
        for (int i = 0; i < m; ++i) a(i, j) = r.factors(i, j);
    auto check = [q = r.q](auto, auto n, auto, const Operand<T>& made, auto&) {
        EXPECT_LT(difference(WideMatrix(made.now()), leading(q, q.m, n), 1, epsilon<T>), qrBound);
    };
    return routineCall<T>(
        where, [](auto e) { return e.orgqr; }, check, m, n, k, a, Adjacent<T>{r.tau});
}

template <class T>
auto ormqrCall(char side, char trans, int m, int n, int k, Interface where) {
    const Reflected<T> r(side == 'L' ? m : n, k);
    auto check = [q = op(trans, r.q)](const auto& side, auto, auto, auto, auto, const Operand<T>& a,
                                      auto&, const Operand<T>& c) {
        const WideMatrix before(c.before);
        EXPECT_LT(difference(WideMatrix(c.now()), char(side) == 'L' ? q * before : before * q,
                             norm1(before), epsilon<T>),
                  qrBound);
        EXPECT_TRUE(a.untouched());
    };
    return routineCall<T>(
        where, [](auto e) { return e.ormqr; }, check, side, trans, m, n, k, r.factors,
        Adjacent<T>{r.tau}, Matrix<T>::random(m, n, m + 2, 5));
}

// A lower bound of the condition number, seldom off by more than a small factor.
template <class T>
auto conditionCheck(double actual) {
    return [actual](auto, auto, const Operand<T>&, auto, const Operand<RealOf<T>>& rcond) {
        const double estimate = rcond.now()(0, 0);
        EXPECT_GE(estimate, actual * (1 - 1e-3));
        EXPECT_LE(estimate, actual * 4);
    };
}
template <class T>
Adjacent<RealOf<T>> oneReal() {
    return {blank<RealOf<T>>(1), true};
}

template <class T>
auto geconCall(char norm, int n, Interface where) {
    const Factorized<T> f(n);
    const WideMatrix a(f.a);
    return routineCall<T>(
        where, [](auto e) { return e.gecon; },
        conditionCheck<T>(reciprocalCondition(a, norm == 'I')), norm, n, f.factors,
        RealOf<T>(norm1(norm == 'I' ? op('T', a) : a)), oneReal<T>());
}

template <class T>
auto poconCall(char uplo, int n, Interface where) {
    const auto a = positiveDefinite<T>(n);
    return routineCall<T>(
        where, [](auto e) { return e.pocon; },
        conditionCheck<T>(reciprocalCondition(WideMatrix(a), false)), uplo, n,
        choleskyFactor(uplo, a), RealOf<T>(norm1(WideMatrix(a))), oneReal<T>());
}

// A singular matrix, one that is so for all its norm can tell, and none at all.
template <class T>
void geconFailing() {
    using R = RealOf<T>;
    for (auto [n, norm, expected] : {std::tuple{5, R(1), R(0)}, {5, R(0), R(0)}, {0, R(1), R(1)}}) {
        auto call = routineCall<T>(
            inHost, [](auto e) { return e.gecon; }, [](auto&...) {}, '1', n, filled(n, n, T(0)),
            norm, oneReal<T>());
        EXPECT_EQ(lumoNoError, call->run());
        EXPECT_EQ(expected, call->template result<4>()(0, 0)) << n << ", " << norm;
    }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    auto add = [&](const std::string& name, auto good, auto sweep,
                   std::function<void()> failing = nullptr) {
        registerRoutine({letter + name, std::move(good), std::move(failing), std::move(sweep),
                         isDouble<T>, shrinkPanels<T>});
    };
    std::vector<GoodCase> good, sweep;
    for (char trans : {'N', 'T', 'C'}) {
        auto make = [=](int n, int nrhs, Interface i) { return getrsCall<T>(trans, n, nrhs, i); };
        good = good + casesOf(std::string(1, trans), {{1, 1}, {9, 4}, {40, 1}, {33, 70}}, make);
        sweep = sweep + casesOf(std::string(1, trans), {{6, 2}}, make);
    }
    add("getrs", good, sweep, getrsFailing<T>);

    good = sweep = {};
    for (char uplo : {'U', 'L'}) {
        auto make = [=](int n, int nrhs, Interface i) { return potrsCall<T>(uplo, n, nrhs, i); };
        good = good + casesOf(std::string(1, uplo), {{1, 1}, {9, 4}, {40, 1}}, make);
        sweep = sweep + casesOf(std::string(1, uplo), {{6, 2}}, make);
    }
    add("potrs", good, sweep);

    auto square = [](int k, Shapes shapes) {
        return casesOf(
            std::to_string(k), std::move(shapes),
            [=](int m, int n, Interface i) { return orgqrCall<T>(m, n, k, i); }, shrinkPanels<T>);
    };
    add("orgqr",
        square(0, {{3, 2}}) + square(4, {{4, 4}, {9, 5}}) + square(11, {{30, 11}, {20, 20}}),
        square(3, {{7, 5}}));

    good = sweep = {};
    for (char side : {'L', 'R'})
        for (char trans : {'N', 'C'}) {
            auto make = [=](int m, int n, Interface i) {
                return ormqrCall<T>(side, trans, m, n, std::min({side == 'L' ? m : n, 9}), i);
            };
            good =
                good + casesOf("ormqr", {{1, 1}, {9, 5}, {5, 9}, {20, 33}}, make, shrinkPanels<T>);
            sweep = sweep + casesOf("ormqr", {{6, 5}}, make);
        }
    add("ormqr", good, sweep);

    good = sweep = {};
    for (char norm : {'1', 'I'}) {
        auto make = [=](int n, int, Interface i) { return geconCall<T>(norm, n, i); };
        good = good + casesOf("gecon", {{1, 0}, {2, 0}, {30, 0}, {71, 0}}, make);
        sweep = sweep + casesOf("gecon", {{3, 0}}, make);
    }
    add("gecon", good, sweep, geconFailing<T>);

    good = sweep = {};
    for (char uplo : {'U', 'L'}) {
        auto make = [=](int n, int, Interface i) { return poconCall<T>(uplo, n, i); };
        good = good + casesOf("pocon", {{1, 0}, {2, 0}, {40, 0}}, make);
        sweep = sweep + casesOf("pocon", {{3, 0}}, make);
    }
    add("pocon", good, sweep);
});

}  // namespace
}  // namespace test
