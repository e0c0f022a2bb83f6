// Divide and conquer on bidiagonal matrices.
#include "lapack/bdsdc.h"

#include "lapack/orthogonal.h"
#include "lapack/tridiagonal_families.h"
#include "lapack/tuning.h"
#include "support/kernels.h"

namespace test {
namespace {

template <class R>
class Bdsdc : public OnMachine {
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
        EXPECT_LT(difference(ud * op('C', v), b, scale, epsilon<R>), svdBound);
        EXPECT_LT(orthogonality(u, epsilon<R>), svdBound);
        EXPECT_LT(orthogonality(v, epsilon<R>), svdBound);
        std::vector<double> values(d.begin(), d.end()), offs(e.begin(), e.end()), work(8 * n + 8);
        offs.push_back(0);
        double none;
        ASSERT_EQ(0, cpu::lasdq<double>('U', 0, n, 0, 0, 0, values.data(), offs.data(), &none, 1,
                                        &none, 1, &none, 1, work.data()));
        std::sort(values.rbegin(), values.rend());
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(values[i] / unit, r.d[i] / unit, svdBound * n * epsilon<R> * scale) << i;
    }

  protected:
    static constexpr double svdBound = 50;  // LAPACK svd.in

    void SetUp() override {
        OnMachine::SetUp();
        leaf_ = temporarily(lumo::stedcLeaf, 3);
    }

  private:
    std::shared_ptr<void> leaf_;
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Bdsdc, RealTypes);

TYPED_TEST(Bdsdc, HardMatrices) {
    for (const Family& f : hardFamilies<TypeParam>())
        for (int n : {1, 2, 4, 21, 64, 130}) {
            SCOPED_TRACE(f.name + (" " + std::to_string(n)));
            this->check(n, f.d, f.e);
        }
}

TYPED_TEST(Bdsdc, AllMachinesAndSchedules) {
    for (int capability : {20, 90})
        for (Schedule schedule : {Schedule::earliest, Schedule::latest}) {
            if (onSoftwareDevice()) this->start(machine(capability), schedule);
            this->check(70, uniform(4), uniform(5));
            this->check(45, all(1), all(0.25));
        }
}

TYPED_TEST(Bdsdc, RandomStructures) {
    const Elements any = ofFewNumbers<TypeParam>(7);
    for (int i = 0; i < 1000 && !this->HasFailure(); ++i) this->check(2 + i % 19, any, any);
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
