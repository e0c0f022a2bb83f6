// syevd and heevd through the harness.
#include "lapack/eigen.h"
#include "lapack/operands_call.h"

namespace test {
namespace {

template <class T>
void checkEigen(char jobz, char uplo, const Operand<T>& a, const Operand<RealOf<T>>& w) {
    const WideMatrix before = hermitian(uplo, WideMatrix(a.before));
    const int n = before.n;
    const double scale = std::max(norm1(before), 1e-300);
    const std::vector<RealOf<T>> values = w.now().data;
    const std::vector<double> expected = referenceValues(before);
    for (int i = 0; i < n; ++i) {
        EXPECT_NEAR(expected[i], values[i], eigenBound * n * epsilon<T> * scale) << i;
        EXPECT_LE(values[i > 0 ? i - 1 : 0], values[i]);
    }
    if (jobz == 'N') return;
    const WideMatrix v(a.now()),
        vw(n, n, [&](int i, int j) { return v(i, j) * double(values[j]); });
    EXPECT_LT(difference(before * v, vw, scale, epsilon<T>), eigenBound);
    EXPECT_LT(orthogonality(v, epsilon<T>), eigenBound);
}

template <class T>
auto syevdCall(char jobz, char uplo, const Matrix<T>& a, Interface where) {
    auto check = [=](auto, auto, auto, const Operand<T>& v, const Operand<RealOf<T>>& w) {
        checkEigen(jobz, uplo, v, w);
    };
    return routineCall<T>(
        where, [](auto e) { return e.syevd; }, check, jobz, uplo, a.n, stored(uplo, a),
        Adjacent<RealOf<T>>{blank<RealOf<T>>(a.n)});
}

template <class T>
std::vector<GoodCase> syevdCases(const Shapes& orders, Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (char jobz : {'N', 'V'})
        for (char uplo : {'U', 'L'})
            cases = cases +
                    casesOf(
                        {jobz, uplo}, orders,
                        [=](int n, int, Interface interface) {
                            return syevdCall(jobz, uplo, Matrix<T>::random(n, n, n + 3), interface);
                        },
                        blocks);
    return cases;
}

template <class T>
void failing() {
    for (double bad : {std::nan(""), HUGE_VAL})
        for (char jobz : {'N', 'V'})
            for (char uplo : {'U', 'L'}) {
                auto a = Matrix<T>::random(9, 9);
                a(4, 5) = a(5, 4) = scalar<T>(bad);
                auto call = syevdCall(jobz, uplo, a, inHost);
                EXPECT_EQ(Outcome(lumoDataError, 9), outcome(call->run()));
                for (auto value : call->template result<4>().data) EXPECT_TRUE(std::isnan(value));
            }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    registerRoutine(
        {letter + (lumo::isComplex<T> ? "heevd" : "syevd"),
         syevdCases<T>({{1, 0}, {2, 0}, {3, 0}, {5, 0}, {9, 0}, {30, 0}}, shrinkBlocks<T>) +
             syevdCases<T>({{140, 0}}),
         failing<T>, syevdCases<T>({{7, 0}}, shrinkBlocks<T>), isDouble<T>, shrinkBlocks<T>, true});
});

template <class T>
class ScaledEigenproblems : public OnMachine {};
TYPED_TEST_SUITE(ScaledEigenproblems, ElementTypes);

// Near the ends of the range, where squares would leave it, in both triangles.
TYPED_TEST(ScaledEigenproblems, AreAsAccurate) {
    using T = TypeParam;
    using Limits = std::numeric_limits<RealOf<T>>;
    for (double scale : {double(Limits::min()) * 8, double(Limits::max()) / 512, 0.0})
        for (char uplo : {'U', 'L'})
            for (char jobz : {'N', 'V'}) {
                WideMatrix a(Matrix<T>::random(20, 20));
                for (Wide& x : a.data) x *= scale;
                auto call = syevdCall(jobz, uplo, narrowed<T>(a), inHost);
                ASSERT_EQ(lumoNoError, call->run());
                call->checkResult();
            }
}

}  // namespace
}  // namespace test
