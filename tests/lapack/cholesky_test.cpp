// potrf and posv through the harness.
#include "lapack/cholesky.h"

#include "lapack/operands_call.h"
#include "lapack/tuning.h"

namespace test {
namespace {

// Blocks of 8.
template <class T>
std::shared_ptr<void> shrinkBlocks() {
    return temporarily(lumo::potrfTuning<T>, {8, 8});
}

// Not a number where nobody is to look.
template <class T>
Matrix<T> stored(char uplo, Matrix<T> a) {
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.n; ++i)
            if (!inTriangle(uplo, i, j)) a(i, j) = scalar<T>(std::nan(""));
    return a;
}

template <class T>
auto potrfCall(char uplo, const Matrix<T>& a, Interface where) {
    auto check = [=](auto, auto, const Operand<T>& f) { checkFactor(uplo, f); };
    return routineCall<T>(
        where, [](auto e) { return e.potrf; }, check, uplo, a.n, stored(uplo, a));
}

template <class T>
auto posvCall(char uplo, const Matrix<T>& a, int nrhs, Interface where) {
    auto check = [=](auto, auto, auto, const Operand<T>& f, const Operand<T>& x) {
        checkFactor(uplo, f);
        EXPECT_LT(solveResidual(a, x.now(), x.before), solveBound);
    };
    return routineCall<T>(
        where, [](auto e) { return e.posv; }, check, uplo, a.n, nrhs, stored(uplo, a),
        Matrix<T>::random(a.n, nrhs, a.n + 2, 2));
}

// The first minor that is not positive, in the first block, a later one, the last; by a zero, a
// negative number and one that is none.
template <class T>
void failing() {
    for (int j : {0, 7, 8, 13, 20})
        for (char uplo : {'U', 'L'})
            for (double value : {0.0, -1.0, std::nan("")})
                for (Interface where : {inHost, inDevice}) {
                    SCOPED_TRACE(label(std::string(1, uplo), j, int(value), where));
                    auto a = positiveDefinite<T>(21);
                    a(j, j) = scalar<T>(value);
                    EXPECT_EQ(Outcome(lumoDataError, j + 1),
                              outcome(potrfCall(uplo, a, where)->run()));
                    auto call = posvCall(uplo, a, 2, where);
                    EXPECT_EQ(Outcome(lumoDataError, j + 1), outcome(call->run()));
                    call->look(
                        [](auto, auto, auto, auto&, auto& b) { EXPECT_TRUE(b.untouched()); });
                }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    std::vector<GoodCase> potrf, potrfSweep, posv, posvSweep;
    for (char uplo : {'U', 'L'}) {
        const std::string name(1, uplo);
        auto factorize = [=](int n, int, Interface i) {
            return potrfCall(uplo, positiveDefinite<T>(n, n + 3), i);
        };
        potrf = potrf + casesOf(name, {{1, 0}, {7, 0}, {8, 0}, {9, 0}, {16, 0}, {37, 0}}, factorize,
                                shrinkBlocks<T>);
        potrf = potrf + casesOf(name, {{300, 0}}, factorize);
        potrfSweep = potrfSweep + casesOf(name, {{17, 0}}, factorize, shrinkBlocks<T>);
        auto solve = [=](int n, int nrhs, Interface i) {
            return posvCall(uplo, positiveDefinite<T>(n), nrhs, i);
        };
        posv = posv + casesOf(name, {{1, 1}, {20, 3}, {33, 40}}, solve, shrinkBlocks<T>);
        posvSweep = posvSweep + casesOf(name, {{9, 2}}, solve, shrinkBlocks<T>);
    }
    registerRoutine({letter + "potrf", potrf, nullptr, potrfSweep, isDouble<T>, shrinkBlocks<T>});
    registerRoutine({letter + "posv", posv, failing<T>, posvSweep, isDouble<T>, shrinkBlocks<T>});
});

}  // namespace
}  // namespace test
