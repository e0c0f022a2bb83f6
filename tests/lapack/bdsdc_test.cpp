// Divide and conquer on bidiagonal matrices.
#include "lapack/bdsdc.h"

#include "lapack/orthogonal.h"
#include "lapack/tridiagonal_families.h"

namespace test {
namespace {

template <class R>
class Bdsdc : public DividedMatrices<R> {
    using Base = DividedMatrices<R>;

  public:
    struct Result {
        int info = 0;
        std::vector<R> d;
        Matrix<R> u{0, 0}, v{0, 0};
    };
    static Result run(const std::vector<R>& d, std::vector<R> e) {
        const int n = int(d.size());
        Result r{0, d};
        const OnDevice<R> u(poisoned<R>(n, n, n + 3)), v(poisoned<R>(n, n, n + 1));
        try {
            lumo::bdsdc(n, r.d.data(), e.data(), u.data(), u.ld(), v.data(), v.ld());
        } catch (const lumo::InfoException& error) {
            EXPECT_EQ(lumoDataError, error.status());
            r.info = error.info();
        }
        r.u = u.download();
        r.v = v.download();
        EXPECT_TRUE(r.u.paddingUntouched() && r.v.paddingUntouched());
        return r;
    }

    // B = U diag(d) V^T with orthogonal U and V, d descending and as the CPU's iteration has it.
    static void check(int n, const Elements& diagonal, const Elements& off) {
        const std::vector<R> d = vectorOf<R>(n, diagonal), e = vectorOf<R>(n - 1, off);
        const Result r = run(d, e);
        ASSERT_EQ(0, r.info);
        EXPECT_TRUE(std::is_sorted(r.d.rbegin(), r.d.rend()));
        EXPECT_GE(r.d.back(), 0);
        // In units of the norm: denormal numbers times eps are zero.
        double norm = 0;
        for (int i = 0; i < n; ++i)
            norm = std::max({norm, std::abs(double(d[i])), i > 0 ? std::abs(double(e[i - 1])) : 0});
        const double unit = norm > 0 ? norm : 1;
        const WideMatrix b(n, n, [&](int i, int j) {
            return (i == j ? d[i] : j == i + 1 ? e[i] : R(0)) / unit;
        });
        const WideMatrix u(r.u), v(r.v),
            ud(n, n, [&](int i, int j) { return u(i, j) * (r.d[j] / unit); });
        const double scale = std::max(1.0, norm1(b));
        EXPECT_LT(difference(ud * op('C', v), b, scale, epsilon<R>), Base::bound);
        EXPECT_LT(orthogonality(u, epsilon<R>), Base::bound);
        EXPECT_LT(orthogonality(v, epsilon<R>), Base::bound);
        std::vector<double> values(d.begin(), d.end()), offs(e.begin(), e.end()), work(8 * n + 8);
        offs.push_back(0);
        double none;
        ASSERT_EQ(0, cpu::lasdq<double>('U', 0, n, 0, 0, 0, values.data(), offs.data(), &none, 1,
                                        &none, 1, &none, 1, work.data()));
        std::sort(values.rbegin(), values.rend());
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(values[i] / unit, r.d[i] / unit, Base::bound * n * epsilon<R> * scale) << i;
    }
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Bdsdc, RealTypes);

TYPED_TEST(Bdsdc, HardMatrices) {
    this->checkHard(this->check);
}
TYPED_TEST(Bdsdc, AllMachinesAndSchedules) {
    this->checkOnMachines(this->check);
}
TYPED_TEST(Bdsdc, RandomStructures) {
    this->checkRandomStructures(this->check);
}

TYPED_TEST(Bdsdc, NeitherNanNorInfinityBecomesAValue) {
    using R = TypeParam;
    for (double bad : {std::nan(""), HUGE_VAL}) {
        auto d = vectorOf<R>(12, all(1)), e = vectorOf<R>(11, all(1));
        (std::isnan(bad) ? d : e)[5] = R(bad);
        const auto r = this->run(d, e);
        EXPECT_EQ(12, r.info);
        for (R value : r.d) EXPECT_TRUE(std::isnan(value));
    }
}

}  // namespace
}  // namespace test
