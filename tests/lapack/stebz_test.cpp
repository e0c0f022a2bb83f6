// Values of tridiagonal matrices by bisection on the device.
#include "lapack/stebz.h"

#include "lapack/orthogonal.h"
#include "lapack/tridiagonal_families.h"

namespace test {
namespace {

template <class R>
class Stebz : public DividedMatrices<R> {
    using Base = DividedMatrices<R>;

  public:
    // How many eigenvalues x is not below, counted with digits to spare.
    static int notAbove(long double x, const std::vector<R>& d, const std::vector<R>& e) {
        int count = 0;
        long double q = 1;
        for (std::size_t i = 0; i < d.size(); ++i) {
            const long double off = i > 0 ? e[i - 1] : R(0);
            q = d[i] - x - off * off / q;
            if (q == 0) q = -std::numeric_limits<long double>::min();
            count += q < 0;
        }
        return count;
    }
    // Off-diagonal elements differ by 2.5 eps, which is 5 together, numbers below 4 by 4. The
    // values ascend, and some of them are as all are.
    static void check(int n, const Elements& diagonal, const Elements& off) {
        const std::vector<R> d = vectorOf<R>(n, diagonal), e = vectorOf<R>(n - 1, off);
        double norm = std::numeric_limits<R>::min();
        for (const auto& elements : {d, e})
            for (R x : elements) norm = std::max(norm, std::abs(double(x)));
        const long double bound = 9 * epsilon<R> * norm;
        for (int lanes : {0, 3 * n, 1 << 16}) {
            const auto changed = temporarily(lumo::stebzLanes, lanes);
            std::vector<R> values(n), last(n);
            lumo::stebz(n, d.data(), e.data(), 0, n, values.data());
            EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
            for (int i = 0; i < n; ++i) {
                EXPECT_LE(notAbove(values[i] - bound, d, e), i);
                EXPECT_GT(notAbove(values[i] + bound, d, e), i);
            }
            lumo::stebz(n, d.data(), e.data(), n / 3, n - n / 3, last.data() + n / 3);
            std::copy_n(values.data(), n / 3, last.data());
            EXPECT_EQ(values, last);
        }
    }
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Stebz, RealTypes);

TYPED_TEST(Stebz, HardMatrices) {
    this->checkHard(this->check);
}
TYPED_TEST(Stebz, AllMachinesAndSchedules) {
    this->checkOnMachines(this->check);
}
TYPED_TEST(Stebz, RandomStructures) {
    this->checkRandomStructures(this->check);
}

// A diagonal is its own values, zeros are zero; small values that the elements tell have all their
// digits, others down to zero.
TYPED_TEST(Stebz, SmallValues) {
    using R = TypeParam;
    const std::vector<R> d{3, 0, R(1) / 3, -1e-20, 0}, zeros(4);
    std::vector<R> values(5);
    lumo::stebz(5, d.data(), zeros.data(), 0, 5, values.data());
    EXPECT_EQ((std::vector<R>{R(-1e-20), 0, 0, R(1) / 3, 3}), values);
    const R tiny = std::numeric_limits<R>::min() * 16, e[] = {1, tiny};
    const R none[] = {0, 0, 0};
    lumo::stebz(3, none, e, 0, 3, values.data());
    EXPECT_EQ((std::vector<R>{-1, 0, 1}), (std::vector<R>{values[0], values[1], values[2]}));
    for (const R small : {std::sqrt(tiny) / 16, tiny, R(0)}) {  // beside 1: not by bisection
        std::vector<R> b{1, small}, f{1};
        EXPECT_FALSE(lumo::bidiagonalStebz(2, b.data(), f.data()));
        EXPECT_EQ((std::vector<R>{1, small}), b);
        EXPECT_EQ(1, f[0]);
    }
}

class StebzCalls : public OnSoftwareDevice {};

// One launch, to which two numbers a row travel.
TEST_F(StebzCalls, ValuesAloneAreFoundByTheDevice) {
    start(machine(90));
    const int n = 60;
    const Matrix<double> a = Matrix<double>::random(n, n);
    const OnDevice<double> da(a), dw(Matrix<double>(n, 1));
    const auto launches = [](auto call) { return count(traceOf(call), "Bisection_k<double>"); };
    EXPECT_EQ(1, launches([&] { lumoDeviceDsyevd('N', 'L', n, da.data(), n, dw.data()); }));
    EXPECT_EQ(1, launches([&] {
                  lumoDeviceDgesvd('N', 'N', n, n, da.data(), n, dw.data(), nullptr, 1, nullptr, 1);
              }));
}

}  // namespace
}  // namespace test
