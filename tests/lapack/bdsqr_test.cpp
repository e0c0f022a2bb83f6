// The bidiagonal singular value iteration.
#include "lapack/bdsqr.h"

#include <array>
#include <functional>
#include <set>

#include "common/letters.h"
#include "lapack/orthogonal.h"
#include "lapack/tuning.h"
#include "residuals.h"
#include "support/kernels.h"

namespace test {
namespace {

// A bidiagonal matrix.
struct Bidiagonal {
    char uplo;
    std::vector<double> d, e;

    int n() const { return int(d.size()); }
    WideMatrix dense() const {
        const int below = lumo::upper(uplo) == 'L', right = 1 - below;
        return {n(), n(), [&](int i, int j) {
                    return i == j ? d[i] : i - below == j - right ? e[std::min(i, j)] : 0;
                }};
    }
};

using Elements = std::function<double(int)>;  // by their place

Elements all(double value) {
    return [=](int) { return value; };
}
Elements uniform(unsigned seed) {
    return [numbers = Random(seed)](int) mutable { return numbers.next<double>(); };
}
Elements powers(double base, int first = 0, double factor = 1) {
    return [=](int i) { return factor * std::pow(base, first + i); };
}

// Rounded as the device will have it.
template <class Real>
Bidiagonal bidiagonal(char uplo, int n, const Elements& d, const Elements& e) {
    Bidiagonal b{uplo, std::vector<double>(n), std::vector<double>(n - 1)};
    for (int i = 0; i < n; ++i) b.d[i] = Real(d(i));
    for (int i = 0; i + 1 < n; ++i) b.e[i] = Real(e(i));
    return b;
}

// What one call left behind.
template <class T>
struct Result {
    int info = 0;
    std::vector<double> d, e;
    Matrix<T> vt, u, c;
};

template <class T>
class Bdsqr : public OnMachine {
  public:
    using Real = RealOf<T>;

    // VT, U and C are updated, each if it has columns or rows of vectors.
    static Result<T> run(const Bidiagonal& b, const Matrix<T>& vt = none(),
                         const Matrix<T>& u = none(), const Matrix<T>& c = none()) {
        const int n = b.n();
        auto vector = [n](const std::vector<double>& from) {
            Matrix<Real> x(n, 1);  // of e, one element more, which nobody touches
            std::copy(from.begin(), from.end(), x.data.begin());
            return x;
        };
        OnDevice<Real> dd(vector(b.d)), de(vector(b.e));
        OnDevice<T> dvt(vt), du(u), dc(c);
        int info = 0;
        try {
            lumo::bdsqr<T>(b.uplo, n, vt.n, u.m, c.n, dd.data(), de.data(), dvt.data(), dvt.ld(),
                           du.data(), du.ld(), dc.data(), dc.ld());
        } catch (const lumo::InfoException& error) {
            EXPECT_EQ(lumoDataError, error.status());
            info = error.info();
        }
        const auto d = dd.download().data, e = de.download().data;
        EXPECT_EQ(Matrix<Real>::mark(), e.back());
        Result<T> r{info,           {d.begin(), d.end()}, {e.begin(), e.end() - 1},
                    dvt.download(), du.download(),        dc.download()};
        EXPECT_TRUE(r.vt.paddingUntouched() && r.u.paddingUntouched() && r.c.paddingUntouched());
        return r;
    }
    static Matrix<T> none() { return Matrix<T>(0, 0); }

  protected:
    static Matrix<T> identity(int n, int ld) {
        Matrix<T> a = filled<T>(n, n, 0, ld);
        for (int j = 0; j < n; ++j) a(j, j) = 1;
        return a;
    }

    // Each value's relative error, but that the iteration with vectors takes off-diagonals near the
    // end of the range for zero.
    static void checkClose(const std::vector<double>& expected, const std::vector<double>& actual) {
        const double n = double(expected.size()), least = std::numeric_limits<Real>::min();
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_NEAR(expected[i], actual[i],
                        std::max(100.0, n) * epsilon<T> * expected[i] + 6 * n * n * least)
                << i;
    }

    // B = U S VT with orthogonal U and VT, S bidiagonal where the iteration gave up.
    static void checkFactors(const Bidiagonal& b, const Result<T>& r) {
        const WideMatrix u(r.u), vt(r.vt), dense = b.dense();
        const Bidiagonal s{'U', r.d, r.info ? r.e : std::vector<double>(r.e.size())};
        const double scale = std::max(norm1(dense), 1e-300);
        EXPECT_LT(difference(u * s.dense() * vt, dense, scale, epsilon<T>), svdBound);
        EXPECT_LT(orthogonality(u, epsilon<T>), svdBound);
        EXPECT_LT(orthogonality(vt, epsilon<T>), svdBound);
    }

    static void check(const Bidiagonal& b) {
        const int n = b.n();
        const auto q = run(b, identity(n, n + 2), identity(n, n + 1));
        ASSERT_EQ(0, q.info);
        checkFactors(b, q);
        EXPECT_TRUE(std::is_sorted(q.d.rbegin(), q.d.rend()));
        for (double value : q.d) EXPECT_TRUE(value >= 0 && !std::signbit(value));

        // The same rotations on other matrices, in and out of place, and on none.
        const auto vt = Matrix<T>::random(n, n + 3, n + 1), u = Matrix<T>::random(5, n, 6),
                   c = Matrix<T>::random(n, 2, n + 1);
        const auto r = run(b, vt, u, c);
        EXPECT_EQ(q.d, r.d);
        // Values alone take another algorithm.
        const auto values = run(b);
        ASSERT_EQ(0, values.info);
        checkClose(q.d, values.d);
        auto expectProduct = [](const Matrix<T>& result, const WideMatrix& product, auto& from) {
            EXPECT_LT(difference(WideMatrix(result), product, norm1(WideMatrix(from)), epsilon<T>),
                      svdBound);
        };
        const WideMatrix p(q.vt), wideU(q.u);
        expectProduct(r.vt, p * WideMatrix(vt), vt);
        expectProduct(r.u, WideMatrix(u) * wideU, u);
        expectProduct(r.c, op('C', wideU) * WideMatrix(c), c);
        const auto narrow = Matrix<T>::random(n, 1, n + 1);
        const auto s = run(b, narrow, u);  // without C, sweeps may be gathered
        EXPECT_EQ(q.d, s.d);
        expectProduct(s.vt, p * WideMatrix(narrow), narrow);
    }
    void checkOnAllMachines(const Bidiagonal& b) {
        for (int capability : {20, 90})
            for (Schedule schedule : {Schedule::earliest, Schedule::latest}) {
                if (onSoftwareDevice()) start(machine(capability), schedule);
                check(b);
            }
        const auto always = temporarily(lumo::gatheredOnCpu, std::size_t(0));
        if (onSoftwareDevice()) start(software::defaultMachine(), Schedule::production);
        check(b);
    }
    static Bidiagonal random(char uplo, int n, unsigned seed = 1) {
        return bidiagonal<Real>(uplo, n, uniform(seed), uniform(seed + 1));
    }
};
TYPED_TEST_SUITE(Bdsqr, ElementTypes);

// Long enough for the ring of rotations to start anew several times.
TYPED_TEST(Bdsqr, RandomMatrices) {
    for (char uplo : {'U', 'l'})
        for (int n : {1, 2, 3, 4, 9, 70}) this->checkOnAllMachines(this->random(uplo, n));
}

TYPED_TEST(Bdsqr, MatricesWithStructure) {
    using Real = RealOf<TypeParam>;
    const double big = std::numeric_limits<Real>::max() / 64;
    // Its squares underflow, and it is far above what counts as zero.
    const double eps = epsilon<Real>, tiny = std::numeric_limits<Real>::min() / (eps * eps);
    const struct {
        const char* name;
        Elements d, e;
    } cases[] = {
        {"zero", all(0), all(0)},
        {"zero diagonal", all(0), all(1)},
        {"negative diagonal", [](int i) { return -double(i * 7 % 20); }, all(0)},
        {"clustered", all(1), [](int i) { return i % 4 ? 1e-4 : 0.1; }},
        {"multiple", all(1), all(1)},
        {"graded down", powers(0.3), powers(0.3)},
        {"graded up", powers(1 / 0.3, -20, -1), powers(1 / 0.3, -20)},
        {"splitting", [](int i) { return i == 11 ? 0 : 1 + i % 3; },
         [](int i) { return i % 5 == 4 ? 0 : -0.5; }},
        {"large", [=](int i) { return big / (1 + i); }, all(big / 3)},
        {"tiny", [=](int i) { return tiny * (1 + i); }, all(tiny)},
    };
    for (const auto& c : cases)
        for (char uplo : {'U', 'L'}) {
            SCOPED_TRACE(c.name);
            this->checkOnAllMachines(bidiagonal<Real>(uplo, 20, c.d, c.e));
        }
    for (double off : {1e20, 1e-20}) this->check({'U', {1, -2}, {Real(off)}});
}

// Small singular values are as accurate, relative to themselves, as large ones: also those that do
// not show in any element.
TYPED_TEST(Bdsqr, RelativeAccuracy) {
    auto check = [&](auto d, auto e) {
        const auto b = bidiagonal<RealOf<TypeParam>>('U', 11, d, e);
        const auto exact = Bdsqr<double>::run(b).d, values = this->run(b).d;
        EXPECT_LT(exact[10], 1e-6 * exact[0]);
        this->checkClose(exact, values);
        this->checkClose(exact, this->run(b, this->none(), Matrix<TypeParam>::random(1, 11)).d);
    };
    for (int capability : {20, 90}) {
        if (onSoftwareDevice()) this->start(machine(capability));
        for (double ratio : {0.1, 10.0}) {
            auto graded = [=](int i) { return std::pow(ratio, i - 5) * (1 + 0.1 * i); };
            check(graded, graded);
        }
        check([](int i) { return 1 + 0.1 * i; }, all(10));
    }
}

// The iteration gives up after its first sweep: what it reached is a factorisation nevertheless.
TYPED_TEST(Bdsqr, NoConvergenceLeavesPartialResults) {
    using T = TypeParam;
    const auto few = temporarily(lumo::bdsqrTuning<T>, {0});
    for (auto [uplo, capability] : {std::pair{'U', 20}, {'L', 20}, {'L', 90}}) {
        if (onSoftwareDevice()) this->start(machine(capability));
        const auto b = this->random(uplo, 12);
        const auto r = this->run(b, this->identity(12, 13), this->identity(12, 12));
        EXPECT_EQ(std::count_if(r.e.begin(), r.e.end(), [](double e) { return e != 0; }), r.info);
        EXPECT_GT(r.info, 8);
        this->checkFactors(b, r);
        const auto values = this->run(b);
        if (lumo::deviceIsModern()) {  // by bisection, which ends
            EXPECT_EQ(0, values.info);
            continue;
        }
        EXPECT_EQ(r.info, values.info);
        EXPECT_TRUE(r.d == values.d && r.e == values.e);
    }
}

TYPED_TEST(Bdsqr, NeitherNanNorInfinityBecomesAValue) {
    using T = TypeParam;
    for (double bad : {std::nan(""), HUGE_VAL})
        for (bool diagonal : {true, false}) {
            auto b = this->random('U', 12);
            (diagonal ? b.d : b.e)[5] = bad;
            const auto vt = Matrix<T>::random(12, 12), u = Matrix<T>::random(12, 12);
            const auto r = this->run(b, vt, u);
            EXPECT_EQ(11, r.info);
            for (double value : r.d) EXPECT_TRUE(std::isnan(value));
            EXPECT_TRUE(vt == r.vt && u == r.u);
            const Bidiagonal single{'U', {bad}, {}};
            EXPECT_EQ(1, this->run(single).info);
        }
}

// Values alone, on what an iteration with shifts finds hard: every pivot small, long products of
// small ratios, many blocks, singular blocks between others, numbers over all the range.
TYPED_TEST(Bdsqr, ValuesAloneAgreeWithTheIterationWithVectors) {
    using Real = RealOf<TypeParam>;
    const int n = 150;
    auto check = [&](const char* name, const Elements& d, const Elements& e) {
        SCOPED_TRACE(name);
        for (bool turned : {false, true}) {
            if (onSoftwareDevice()) this->start(machine(turned ? 20 : 90));
            auto b = bidiagonal<Real>('U', n, d, e);
            if (turned) {
                std::reverse(b.d.begin(), b.d.end());
                std::reverse(b.e.begin(), b.e.end());
            }
            const auto with = this->run(b, Matrix<TypeParam>::random(n, 1));
            const auto values = this->run(b);
            ASSERT_TRUE(with.info == 0 && values.info == 0);
            this->checkClose(with.d, values.d);
            for (double off : values.e) EXPECT_EQ(0, off);
        }
    };
    check("Toeplitz", all(1), all(1));
    check("glued", all(1), [](int i) { return i % 10 ? 0.5 : 1e-6; });
    check("nearly diagonal", all(1), all(1e-3));
    auto root = [](int from) { return [=](int i) { return std::sqrt(from - i); }; };
    check("as of a random matrix", root(n), root(n - 1));
    const Elements someZero = [](int i) { return i % 40 == 7 ? 0 : 1 + i % 5; };
    check("singular", someZero, all(1));
    auto spread = [](int step) {
        return [=](int i) { return std::pow(10, (i * step) % 61 - 30); };
    };
    check("over the range", spread(37), spread(53));
    check("random", uniform(3), uniform(4));
}

class BdsqrCalls : public OnSoftwareDevice {
  protected:
    static constexpr int n = 30;
    // Which vectors there are; d and e are powers of `ratio`, but for a perturbation.
    static std::vector<software::Call> traceOf(bool vt, bool u, bool c, int order = n,
                                               float ratio = 1) {
        const auto a = Matrix<float>::random(order, order);
        auto elements = Matrix<float>(order, 1);
        for (int i = 0; i < order; ++i)
            elements(i, 0) = std::pow(ratio, float(i)) + 0.1f * float(i % 7) * (ratio == 1);
        OnDevice<float> d(elements), e(elements), x(a), y(a), z(a);
        return test::traceOf([&] {
            lumo::bdsqr<float>('U', order, vt ? order : 0, u ? order : 0, c ? order : 0, d.data(),
                               e.data(), x.data(), order, y.data(), order, z.data(), order);
        });
    }
};

TEST_F(BdsqrCalls, OneLaunchAMatrixAndOneTransferASweep) {
    for (int wanted : {1, 2, 3, 4, 7}) {
        const bool vt = wanted & 1, u = wanted & 2, c = wanted & 4;
        const auto trace = traceOf(vt, u, c);
        const int sweeps = count(trace, "cudaMemcpyAsync");
        EXPECT_GT(sweeps, n);
        EXPECT_EQ(sweeps * (vt + u), count(trace, "LASR_k<cudalib::StaticMap1D<64u>, (char)82"));
        EXPECT_EQ(sweeps * c, count(trace, "LASR_k<cudalib::StaticMap1D<128u>, (char)76"));
        EXPECT_EQ(vt ? 2 : 0, count(trace, "TransposeInplace_k<"));
        EXPECT_EQ(4, count(trace, "cudaMemcpy"));
        // The sweeps' own rotations, and only the pairs that somebody wants.
        const int unit = int(sizeof(float)) * 2 * (vt + (u || c));
        std::set<int> sizes;
        for (const auto& call : trace)
            if (call.name == "cudaMemcpyAsync") sizes.insert(std::stoi(call.arguments.at(2)));
        for (int size : sizes) EXPECT_EQ(0, size % unit);
        EXPECT_EQ((n - 1) * unit, *sizes.rbegin());
        EXPECT_EQ(2 * unit, *sizes.begin());  // a smaller block takes no sweep
    }
}

// From capability 7.0 on: of the sweeps on U and VT, a transfer and a launch a matrix for many.
TEST_F(BdsqrCalls, SweepsAreGathered) {
    const int sweeps = count(traceOf(true, true, false), "cudaMemcpyAsync");
    start(machine(90));
    for (int wanted : {1, 2, 3}) {
        const auto trace = traceOf(wanted & 1, wanted & 2, false);
        const int groups = count(trace, "cudaMemcpyAsync");
        EXPECT_TRUE(groups > sweeps / 32 && groups < sweeps / 8) << groups << " of " << sweeps;
        EXPECT_EQ(wanted == 3 ? 2 * groups : groups, count(trace, "ApplySweeps_k<float>"));
        EXPECT_EQ(0, count(trace, "LASR_k<") + count(trace, "cublasSrot"));
    }
}

TEST_F(BdsqrCalls, ChasesTowardsTheSmallElements) {
    for (float ratio : {0.5f, 2.0f}) {
        const auto trace = traceOf(false, true, false, 12, ratio);
        const std::string kernel = "LASR_k<cudalib::StaticMap1D<64u>, (char)82, (char)86, (char)";
        EXPECT_EQ(ratio<1, count(trace, kernel + "70")> 0);
        EXPECT_EQ(ratio > 1, count(trace, kernel + "66") > 0);
    }
}

TEST_F(BdsqrCalls, ValuesAloneNeedNoDevice) {
    const auto trace = traceOf(false, false, false);
    for (const auto& call : trace) EXPECT_EQ("cudaMemcpy", call.name);
    EXPECT_EQ(4u, trace.size());
    EXPECT_EQ(2, count(traceOf(false, false, false, 1), "cudaMemcpy"));
}

TEST_F(BdsqrCalls, ChecksInOrder) {
    float x = 0;
    expectChecks(&lumo::bdsqr<float>, {1, 2, 3, 4, 5, 9, 11, 13},
                 {'X', -1, -1, -1, -1, &x, &x, &x, 2, &x, 3, &x, 2},
                 {'l', 3, 1, 4, 1, &x, &x, &x, 3, &x, 4, &x, 3});
    // Without vectors.
    expectChecks(&lumo::bdsqr<float>, {9, 11, 13}, {'U', 3, 0, 0, 0, &x, &x, &x, 0, &x, 0, &x, 0},
                 {'U', 3, 0, 0, 0, &x, &x, &x, 1, &x, 1, &x, 1});
    EXPECT_EQ(0, argumentError([&] { lumo::bdsqr('U', 0, 0, 0, 0, &x, &x, &x, 1, &x, 1, &x, 1); }));
}

}  // namespace
}  // namespace test
