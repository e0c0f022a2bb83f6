// Divide and conquer on symmetric tridiagonal matrices.
#include "lapack/stedc.h"

#include "lapack/orthogonal.h"
#include "lapack/tridiagonal_families.h"

namespace test {
namespace {

template <class R>
class Stedc : public DividedMatrices<R> {
    using Base = DividedMatrices<R>;

  public:
    struct Result {
        int info = 0;
        std::vector<R> d;
        Matrix<R> q{0, 0};
    };
    static Result run(const std::vector<R>& d, std::vector<R> e) {
        const int n = int(d.size());
        Result r{0, d};
        const OnDevice<R> q(poisoned<R>(n, n, n + 3));
        try {
            lumo::stedc(n, r.d.data(), e.data(), q.data(), q.ld());
        } catch (const lumo::InfoException& error) {
            EXPECT_EQ(lumoDataError, error.status());
            r.info = error.info();
        }
        r.q = q.download();
        EXPECT_TRUE(r.q.paddingUntouched());
        return r;
    }

    // T = Q diag(d) Q^T with orthogonal Q, d ascending and as the CPU's iteration has it.
    static void check(int n, const Elements& diagonal, const Elements& off) {
        const std::vector<R> d = vectorOf<R>(n, diagonal), e = vectorOf<R>(n - 1, off);
        const Result r = run(d, e);
        ASSERT_EQ(0, r.info);
        EXPECT_TRUE(std::is_sorted(r.d.begin(), r.d.end()));
        // In units of the norm: denormal numbers times eps are zero.
        double norm = 0;
        for (int i = 0; i < n; ++i)
            norm = std::max({norm, std::abs(double(d[i])), i > 0 ? std::abs(double(e[i - 1])) : 0});
        const double unit = norm > 0 ? norm : 1;
        const WideMatrix t(n, n, [&](int i, int j) {
            return (i == j ? d[i] : std::abs(i - j) == 1 ? e[std::min(i, j)] : R(0)) / unit;
        });
        const WideMatrix q(r.q), qd(n, n, [&](int i, int j) { return q(i, j) * (r.d[j] / unit); });
        const double scale = std::max(1.0, norm1(t));
        EXPECT_LT(difference(qd * op('C', q), t, scale, epsilon<R>), Base::bound);
        EXPECT_LT(orthogonality(q, epsilon<R>), Base::bound);
        std::vector<double> values(d.begin(), d.end()), offs(e.begin(), e.end());
        ASSERT_EQ(0, cpu::sterf<double>(n, values.data(), offs.data()));
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(values[i] / unit, r.d[i] / unit, Base::bound * n * epsilon<R> * scale) << i;
    }
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Stedc, RealTypes);

TYPED_TEST(Stedc, HardMatrices) {
    this->checkHard(this->check);
}
TYPED_TEST(Stedc, AllMachinesAndSchedules) {
    this->checkOnMachines(this->check);
}
TYPED_TEST(Stedc, RandomStructures) {
    this->checkRandomStructures(this->check);
}

TYPED_TEST(Stedc, NeitherNanNorInfinityBecomesAValue) {
    using R = TypeParam;
    for (double bad : {std::nan(""), HUGE_VAL})
        for (bool diagonal : {true, false}) {
            auto d = vectorOf<R>(12, all(1)), e = vectorOf<R>(11, all(1));
            (diagonal ? d : e)[5] = R(bad);
            const auto r = this->run(d, e);
            EXPECT_EQ(12, r.info);
            for (R value : r.d) EXPECT_TRUE(std::isnan(value));
        }
}

class StedcCalls : public OnSoftwareDevice {};

// A level is a handful of launches however many merges it has; what travels is lists and numbers.
TEST_F(StedcCalls, LevelsMergeTogether) {
    const int n = 256, levels = 3;
    std::vector<double> d(n, 2), e(n - 1, -1);
    const OnDevice<double> q(Matrix<double>(n, n));
    const auto trace = traceOf([&] { lumo::stedc(n, d.data(), e.data(), q.data(), n); });
    for (const char* kernel : {"SecularRoots_k<", "SecularWeights_k<", "SecularVectors_k<"})
        EXPECT_EQ(levels, count(trace, kernel)) << kernel;
    EXPECT_EQ(2 * (4 + 2 + 1), count(trace, "cublasDgemm"));
    for (const auto& call : trace) {
        if (call.name == "cudaMemcpy" && call.arguments[3] == "2") {
            EXPECT_EQ(2 * n * sizeof(double), std::stoul(call.arguments[2]));
        }
    }
}

}  // namespace
}  // namespace test
