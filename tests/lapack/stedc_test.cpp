// Divide and conquer on symmetric tridiagonal matrices.
#include "lapack/stedc.h"

#include <functional>

#include "lapack/orthogonal.h"
#include "lapack/tuning.h"
#include "support/kernels.h"

namespace test {
namespace {

using Elements = std::function<double(int)>;  // by their place

Elements all(double value) {
    return [=](int) { return value; };
}
Elements uniform(unsigned seed) {
    return [numbers = Random(seed)](int) mutable { return numbers.next<double>(); };
}
Elements powers(double base, int first = 0) {
    return [=](int i) { return std::pow(base, first + i); };
}

template <class R>
class Stedc : public OnMachine {
  public:
    struct Result {
        int info = 0;
        std::vector<R> d;
        Matrix<R> q{0, 0};
    };
    static std::vector<R> vectorOf(int n, const Elements& f) {
        std::vector<R> x(std::size_t(std::max(n, 0)));
        for (int i = 0; i < n; ++i) x[i] = R(f(i));
        return x;
    }
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
        const std::vector<R> d = vectorOf(n, diagonal), e = vectorOf(n - 1, off);
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
        EXPECT_LT(difference(qd * op('C', q), t, scale, epsilon<R>), eigenBound);
        EXPECT_LT(orthogonality(q, epsilon<R>), eigenBound);
        std::vector<double> values(d.begin(), d.end()), offs(e.begin(), e.end());
        ASSERT_EQ(0, cpu::sterf<double>(n, values.data(), offs.data()));
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(values[i] / unit, r.d[i] / unit, eigenBound * n * epsilon<R> * scale) << i;
    }

  protected:
    static constexpr double eigenBound = 50;  // LAPACK sep.in: xSTT21, xSTECH

    void SetUp() override {
        OnMachine::SetUp();
        leaf_ = temporarily(lumo::stedcLeaf, 3);
    }

  private:
    std::shared_ptr<void> leaf_;
};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Stedc, RealTypes);

// What all deflates from, nothing, nearly all; numbers over all the range; poles as close as they
// may be; roots next to their poles.
TYPED_TEST(Stedc, HardMatrices) {
    using R = TypeParam;
    const double eps = epsilon<R>, most = std::numeric_limits<R>::max() / 64,
                 least = std::numeric_limits<R>::min();
    const Elements wilkinson = [](int i) { return std::abs(i % 21 - 10); };
    const struct {
        const char* name;
        Elements d, e;
    } families[] = {
        {"random", uniform(1), uniform(2)},
        {"zero", all(0), all(0)},
        {"unit", all(1), all(0)},
        {"zero diagonal", all(0), all(1)},
        {"Toeplitz", all(2), all(-1)},
        {"Wilkinson's, glued", wilkinson, [=](int i) { return i % 21 == 20 ? std::sqrt(eps) : 1; }},
        {"Wilkinson's, loosely glued", wilkinson, [](int i) { return i % 21 == 20 ? 1e-3 : 1; }},
        {"one cluster", [=](int i) { return 1 + i * eps; }, all(eps)},
        {"two and three times", [](int i) { return i % 3; },
         [=](int i) { return i % 7 == 6 ? 1e-8
                             : i % 2    ? 8 * eps
                                        : 0.5; }},
        {"nearly diagonal", [](int i) { return i; }, all(1e-2)},
        {"parts", uniform(3), [](int i) { return i % 5 == 4 ? 0 : i % 3 - 1.5; }},
        {"graded down", powers(0.5), powers(0.5)},
        {"graded up", powers(2, -120), powers(2, -120)},
        {"large", [=](int i) { return most / (1 + i); }, all(most / 3)},
        {"tiny", [=](int i) { return least * (1 + i); }, all(least)},
        {"Hermite's", all(0), [](int i) { return std::sqrt(i + 1.0); }},
    };
    for (const auto& f : families)
        for (int n : {1, 2, 4, 21, 64, 130}) {
            SCOPED_TRACE(f.name + (" " + std::to_string(n)));
            this->check(n, f.d, f.e);
        }
}

TYPED_TEST(Stedc, AllMachinesAndSchedules) {
    for (int capability : {20, 90})
        for (Schedule schedule : {Schedule::earliest, Schedule::latest}) {
            if (onSoftwareDevice()) this->start(machine(capability), schedule);
            this->check(70, uniform(4), uniform(5));
            this->check(45, all(1), all(0.25));
        }
}

// Small matrices of few different numbers, where much is equal, zero or close.
TYPED_TEST(Stedc, RandomStructures) {
    const double numbers[] = {
        0, 1, 1, -1, 0.5, 1e-3, epsilon<TypeParam>, 1 + 4 * epsilon<TypeParam>};
    std::mt19937 engine(7);
    const Elements any = [&](int) { return numbers[engine() % 8]; };
    for (int i = 0; i < 1000 && !this->HasFailure(); ++i) this->check(2 + i % 19, any, any);
}

TYPED_TEST(Stedc, NeitherNanNorInfinityBecomesAValue) {
    using R = TypeParam;
    for (double bad : {std::nan(""), HUGE_VAL})
        for (bool diagonal : {true, false}) {
            auto d = this->vectorOf(12, all(1)), e = this->vectorOf(11, all(1));
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
