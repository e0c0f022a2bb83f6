// Reflectors, matrix-vector products.
#include "basic/larfg/larfg.h"
#include "blas/gemv/gemvt.h"
#include "blas/symv/symv.h"
#include "residuals.h"
#include "support/kernels.h"

namespace test {
namespace {

using lumo::Complex;

// --- Reflectors -------------------------------------------------------------------------------

template <class T>
class Reflectors : public OnMachine {
  protected:
    using R = RealOf<T>;
    using Limits = std::numeric_limits<R>;
    using Long = std::complex<long double>;  // has exponents for the squares of all numbers

    static Long exact(T x) {
        if constexpr (lumo::isComplex<T>)
            return {x.re, x.im};
        else
            return x;
    }
    static void expectNear(Long wanted, T actual, int n) {
        const long double bound = (8 + 2 * std::sqrt(n)) * Limits::epsilon() * std::abs(wanted) +
                                  2 * Limits::denorm_min();
        EXPECT_LE(std::abs(exact(actual) - wanted), bound) << wanted << " " << exact(actual);
    }

    // (alpha, x) random, each times a factor.
    void check(int n, int incx, double alphaFactor, double xFactor) {
        SCOPED_TRACE(testing::Message() << n << " elements, alpha " << alphaFactor << ", x "
                                        << xFactor << ", increment " << incx);
        auto x = vectorOf<T>(n - 1, incx);
        Matrix<T> scalars = vectorOf<T>(2, 1, 5);  // alpha, tau
        for (int i = 0; i < n - 1; ++i) x(0, i) = R(xFactor) * x(0, i);
        scalars(0, 0) = R(alphaFactor) * scalars(0, 0);
        OnDevice<T> deviceX(n > 1 ? x : Matrix<T>(1, 1)), both(scalars);
        lumo::larfg(n, both.data(), deviceX.data(), incx, both.data() + 1);
        const auto after = both.download();

        const Long alpha = exact(scalars(0, 0));
        long double sum = 0;
        for (int i = 0; i < n - 1; ++i) sum += std::norm(exact(x(0, i)));
        if (sum == 0 && alpha.imag() == 0) {
            EXPECT_EQ(T(0), after(0, 1));
            EXPECT_EQ(scalars(0, 0), after(0, 0));
            EXPECT_TRUE(n == 1 || x == deviceX.download());
            return;
        }
        const long double norm = std::sqrt(std::norm(alpha) + sum);
        const long double beta = std::signbit(alpha.real()) ? norm : -norm;
        expectNear(beta, after(0, 0), n);
        expectNear((beta - alpha) / beta, after(0, 1), n);
        if (n == 1) return;
        const auto v = deviceX.download();
        for (int i = 0; i < n - 1; ++i) expectNear(exact(x(0, i)) / (alpha - beta), v(0, i), n);
        EXPECT_TRUE(v.paddingUntouched());
    }
};
TYPED_TEST_SUITE(Reflectors, ElementTypes);

TYPED_TEST(Reflectors, AreThoseOfLapack) {
    using Limits = std::numeric_limits<RealOf<TypeParam>>;
    const double smallest = 100 * Limits::denorm_min(), tiny = 4 * Limits::min(),
                 huge = Limits::max() / 128;
    const std::pair<double, double> unlike[] = {{1, 0},        {0, 1},           {0, 0},
                                                {1, smallest}, {smallest, 1},    {huge, 1},
                                                {1, huge},     {tiny, smallest}, {0, smallest}};
    for (int n : {1, 2, 33, 34, 1000})
        for (int incx : {1, 3}) {
            for (double factor : {1.0, -1.0, smallest, tiny, std::sqrt(tiny), huge})
                this->check(n, incx, factor, factor);
            for (auto [alpha, x] : unlike) this->check(n, incx, alpha, x);
        }
}

TYPED_TEST(Reflectors, NotANumberAndInfinityStay) {
    using T = TypeParam;
    for (double odd : {std::nan(""), HUGE_VAL}) {
        auto x = vectorOf<T>(40, 1);
        x(0, 37) = scalar<T>(odd);
        OnDevice<T> both(vectorOf<T>(2, 1)), deviceX(x);
        lumo::larfg(41, both.data(), deviceX.data(), 1, both.data() + 1);
        EXPECT_FALSE(std::isfinite(std::abs(wide(both.download()(0, 0)))));
    }
}

class ReductionLaunches : public OnSoftwareDevice {};

TEST_F(ReductionLaunches, Reflectors) {
    double x = 0, *null = nullptr;
    expectChecks(&lumo::larfg<double>, {1, 5, 2, 3, 4}, {-1, null, null, -1, null},
                 {2, &x, &x, 1, &x});
    EXPECT_EQ(-5, argumentError([&] { lumo::larfg(0, null, null, -1, null); }));
    EXPECT_EQ(0, argumentError([&] { lumo::larfg(0, null, null, -1, &x); }));
    const OnDevice device(vectorOf<double>(3, 1));
    double* p = device.data();
    EXPECT_EQ(Names{}, launchedBy([&] { lumo::larfg(0, p, p, 1, p); }));
    EXPECT_EQ((Names{"LARFG_k<cudalib::StaticOneBlockMap1D<32u>, double>"}),
              launchedBy([&] { lumo::larfg(2, p, p + 1, 0, p + 2); }));
    EXPECT_EQ((Names{"4@0", "8@8", "8@16", "4@24", "8@32"}),
              argumentsPushedBy([&] { lumo::larfg(2, p, p + 1, 1, p + 2); }));
    EXPECT_EQ(Outcome(lumoArgumentError, -5), outcome(lumo::deviceLarfg(0, null, null, 1, null)));
    EXPECT_EQ(lumoNoError, lumo::deviceLarfg(2, p, p + 1, 1, p + 2));
}

// --- Matrix-vector products ---------------------------------------------------------------------

template <class T>
class Products : public OnMachine {
  protected:
    // y := alpha op x + beta y by `multiply`, against the sum of products in double precision. A
    // vector with a negative increment lies backwards in memory.
    template <class Multiply>
    static void expectProduct(const WideMatrix& op, T alpha, int incx, T beta, int incy,
                              Multiply multiply) {
        const OnDevice x(vectorOf<T>(op.n, std::abs(incx), 2));
        const OnDevice y(beta == T(0) ? poisoned<T>(1, op.m, std::abs(incy))
                                      : vectorOf<T>(op.m, std::abs(incy), 3));
        multiply(x.data(), y.data());
        auto column = [](const auto& v, int n, int inc) {
            WideMatrix w(n, 1);
            for (int j = 0; j < n; ++j) w(inc < 0 ? n - 1 - j : j, 0) = wide(v(0, j));
            return w;
        };
        ProductSum sum(wide(beta), beta == T(0) ? WideMatrix(op.m, 1) : column(y, op.m, incy));
        if (!(alpha == T(0))) sum.add(wide(alpha), op, column(x, op.n, incx));
        const auto result = y.download();
        EXPECT_LT(sum.ratio(column(result, op.m, incy), epsilon<T>, [](int, int) { return true; }),
                  blasBound);
        EXPECT_TRUE(result.paddingUntouched());
    }

    static void gemv(char trans, int m, int n, int incx, int incy, T alpha, T beta) {
        SCOPED_TRACE(testing::Message()
                     << trans << " " << m << " x " << n << ", increments " << incx << " " << incy);
        const auto a = Matrix<T>::random(m, n, m + 3);
        const OnDevice stored(alpha == T(0) ? poisoned<T>(m, n, m + 3) : a);
        expectProduct(op(trans, WideMatrix(a)), alpha, incx, beta, incy, [&](T* x, T* y) {
            lumo::gemv(trans, m, n, alpha, stored.data(), a.ld, x, incx, beta, y, incy);
        });
    }

    static void symv(char uplo, int n, int incx, int incy, T alpha, T beta) {
        SCOPED_TRACE(testing::Message()
                     << uplo << " " << n << ", increments " << incx << " " << incy);
        auto half = Matrix<T>::random(n, n, n + 3), whole = half;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                if (!inTriangle(uplo, i, j)) {
                    whole(i, j) = half(j, i);
                    half(i, j) = scalar<T>(std::nan(""));
                }
        const OnDevice stored(half);
        expectProduct(WideMatrix(whole), alpha, incx, beta, incy, [&](T* x, T* y) {
            lumo::symv(uplo, n, alpha, stored.data(), half.ld, x, incx, beta, y, incy);
        });
    }

    const T alpha = scalar<T>(0.75, -0.5), beta = scalar<T>(-1.5, 0.25);
};
TYPED_TEST_SUITE(Products, ElementTypes);

TYPED_TEST(Products, OfMatrices) {
    const auto alpha = this->alpha, beta = this->beta;
    constexpr Shape sizes[] = {{1, 1},    {15, 33},  {16, 3},  {49, 100},  {127, 65},
                               {511, 31}, {512, 32}, {513, 1}, {1100, 66}, {1, 200}};
    for (char trans : {'T', 'C', 'N'})
        for (auto [m, n] : sizes) {
            this->gemv(trans, m, n, 1, 1, alpha, TypeParam(0));
            this->gemv(trans, m, n, 3, 2, alpha, beta);
        }
    this->gemv('T', 40, 50, -2, 1, alpha, beta);
    this->gemv('C', 40, 50, 1, -3, alpha, beta);
    this->gemv('T', 600, 40, 1, 1, TypeParam(0), beta);  // A is not read
}

TYPED_TEST(Products, OfSymmetricMatrices) {
    for (char uplo : {'L', 'U'})
        for (int n : {1023, 1024, 1025, 1087}) this->symv(uplo, n, 1, 1, this->alpha, TypeParam(0));
    this->symv('L', 1100, 2, -3, this->alpha, this->beta);
    this->symv('U', 1088, -1, 2, this->alpha, this->beta);
}

// The launches and CUBLAS calls that f makes, with a launch's grid and block.
template <class F>
Names multipliersOf(F f) {
    return callsBy(f, [](const software::Call& call) {
        const auto& a = call.arguments;
        return call.name == "cudaLaunch"           ? a.at(0) + a.at(1) + a.at(2)
               : call.name.rfind("cublas", 0) == 0 ? call.name
                                                   : "";
    });
}

TEST_F(ReductionLaunches, WhoMultiplies) {
    using C = Complex<float>;
    const OnDevice<float> a(65, 65, 0), x(1, 65, 0), y(1, 65, 0);
    const OnDevice<C> z(3, 3, 0);
    auto calls = [&](char trans, int m, int n, float alpha = 1, int incx = 1, float beta = 0,
                     int incy = 1) {
        return multipliersOf([&] {
            lumo::gemv(trans, m, n, alpha, a.data(), 65, x.data(), incx, beta, y.data(), incy);
        });
    };
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, false>(3,1,1)(32,16,1)"}, calls('t', 65, 65));
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, true>(1,1,1)(32,16,1)"}, calls('C', 65, 32));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('N', 65, 65));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, -1));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, 1, 0, -1));
    EXPECT_EQ(Names{}, calls('T', 65, 65, 0, 1, 1));
    EXPECT_EQ(Names{}, calls('N', 0, 65));
    EXPECT_EQ(Names{}, calls('T', 65, 0));
    EXPECT_EQ((Names{"4@0", "4@4", "4@8", "8@16", "8@24", "4@32", "8@40", "8@48", "4@56", "8@64",
                     "4@72"}),
              argumentsPushedBy([&] {
                  lumo::gemv('C', 3, 3, C(1), z.data(), 3, z.data(), 1, C(0), z.data() + 6, 1);
              }));
    float v = 0;
    expectChecks(&lumo::gemv<float>, {1, 2, 3, 6, 8, 11}, {'X', -1, -1, 1, &v, 1, &v, 0, 0, &v, 0},
                 {'N', 2, 2, 1, &v, 2, &v, 1, 0, &v, 1});
}

TEST_F(ReductionLaunches, WhoMultipliesSymmetricMatrices) {
    auto calls = [](char uplo, int n) {
        const OnDevice<float> a(n, n, 0), x(1, n, 0), y(1, n, 0);
        return multipliersOf(
            [&] { lumo::symv(uplo, n, 1.f, a.data(), n, x.data(), 1, 0.f, y.data(), 1); });
    };
    auto own = [](const char* triangle, const char* bounds, const std::string& blocks) {
        return Names{"symv_init_k<float>(" + blocks + ",1,1)(256,1,1)",
                     std::string("symv_k<float, (uploType)") + triangle + ", (boundsType)" +
                         bounds + ", 64>(" + blocks + ",1,1)(64,1,1)"};
    };
    EXPECT_EQ(Names{"cublasSsymv"}, calls('L', 1023));
    EXPECT_EQ(own("0", "0", "16"), calls('L', 1024));
    EXPECT_EQ(own("0", "1", "17"), calls('l', 1025));
    EXPECT_EQ(own("1", "0", "16"), calls('U', 1024));
    EXPECT_EQ(own("1", "1", "17"), calls('U', 1025));
    float v = 0;
    expectChecks(&lumo::symv<float>, {1, 5, 7, 10}, {'X', 1024, 1, &v, 1, &v, 0, 0, &v, 0},
                 {'L', 1024, 1, &v, 1024, &v, 1, 0, &v, 1});
    start(machine(13));
    EXPECT_EQ(Names{"cublasSsymv"}, calls('L', 1024));
}

}  // namespace
}  // namespace test
