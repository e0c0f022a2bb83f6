// Reflectors, vectors of plane rotations, matrix-vector products.
#include <array>

#include "basic/lar2v/lar2v.h"
#include "basic/larfg/larfg.h"
#include "basic/largv/largv.h"
#include "basic/lartv/lartv.h"
#include "blas/gemv/gemvt.h"
#include "blas/symv/symv.h"
#include "residuals.h"
#include "support/kernels.h"

extern "C" {
#define LUMO_TEST_ROTATIONS(s, T, R)                                                         \
    void s##lar2v_(const int* n, T* x, T* y, T* z, const int* incx, const R* c, const T* s_, \
                   const int* incc);                                                         \
    void s##largv_(const int* n, T* x, const int* incx, T* y, const int* incy, R* c,         \
                   const int* incc);                                                         \
    void s##lartv_(const int* n, T* x, const int* incx, T* y, const int* incy, const R* c,   \
                   const T* s_, const int* incc);
LUMO_TEST_ROTATIONS(s, float, float)
LUMO_TEST_ROTATIONS(d, double, double)
LUMO_TEST_ROTATIONS(c, lumo::Complex<float>, float)
LUMO_TEST_ROTATIONS(z, lumo::Complex<double>, double)
}

namespace {

using lumo::Complex;
using test::argumentError;
using test::expectElements;
using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;
using test::RealOf;
using test::scalar;
using test::vectorOf;

// --- Reflectors -------------------------------------------------------------------------------

template <class T>
class Reflectors : public test::OnMachine {
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
TYPED_TEST_SUITE(Reflectors, test::ElementTypes);

TYPED_TEST(Reflectors, AreThoseOfLapack) {
    using Limits = std::numeric_limits<RealOf<TypeParam>>;
    const double smallest = 100 * Limits::denorm_min(), tiny = 4 * Limits::min(),
                 huge = Limits::max() / 128;
    for (int n : {1, 2, 33, 34, 1000})
        for (int incx : {1, 3}) {
            for (double factor : {1.0, -1.0, smallest, tiny, std::sqrt(tiny), huge})
                this->check(n, incx, factor, factor);
            for (auto [alpha, x] : {std::pair{1.0, 0.0},
                                    {0.0, 1.0},
                                    {0.0, 0.0},
                                    {1.0, smallest},
                                    {smallest, 1.0},
                                    {huge, 1.0},
                                    {1.0, huge},
                                    {tiny, smallest},
                                    {0.0, smallest}})
                this->check(n, incx, alpha, x);
        }
}

TYPED_TEST(Reflectors, NotANumberAndInfinityStay) {
    using T = TypeParam;
    for (double odd : {std::nan(""), HUGE_VAL}) {
        auto x = vectorOf<T>(40, 1);
        x(0, 37) = scalar<T>(odd);
        OnDevice<T> both(vectorOf<T>(2, 1)), deviceX(x);
        lumo::larfg(41, both.data(), deviceX.data(), 1, both.data() + 1);
        EXPECT_FALSE(std::isfinite(std::abs(test::wide(both.download()(0, 0)))));
    }
}

class ReductionLaunches : public test::OnSoftwareDevice {};

TEST_F(ReductionLaunches, ReflectorChecksInOrder) {
    double x = 0, *null = nullptr;
    auto info = [](int n, double* alpha, double* x, int incx, double* tau) {
        return argumentError([&] { lumo::larfg(n, alpha, x, incx, tau); });
    };
    EXPECT_EQ(-1, info(-1, null, null, -1, null));
    EXPECT_EQ(-5, info(0, null, null, -1, null));
    EXPECT_EQ(-5, info(2, null, null, -1, null));
    EXPECT_EQ(0, info(0, null, null, -1, &x));
    EXPECT_EQ(-2, info(2, null, null, -1, &x));
    EXPECT_EQ(-3, info(2, &x, null, -1, &x));
    EXPECT_EQ(-4, info(2, &x, &x, -1, &x));
    OnDevice<double> device(vectorOf<double>(3, 1));
    double* p = device.data();
    EXPECT_EQ(Names{}, launchedBy([&] { lumo::larfg(0, p, p, 1, p); }));
    EXPECT_EQ((Names{"LARFG_k<cudalib::StaticOneBlockMap1D<32u>, double>"}),
              launchedBy([&] { lumo::larfg(2, p, p + 1, 0, p + 2); }));
    EXPECT_EQ((Names{"4@0", "8@8", "8@16", "4@24", "8@32"}),
              test::argumentsPushedBy([&] { lumo::larfg(2, p, p + 1, 1, p + 2); }));
    EXPECT_EQ(lumoArgumentError, lumo::deviceLarfg(0, null, null, 1, null));
    EXPECT_EQ(-5, lumoGetErrorInfo());
    EXPECT_EQ(lumoNoError, lumo::deviceLarfg(2, p, p + 1, 1, p + 2));
}

// --- Vectors of rotations, compared with the CPU LAPACK -----------------------------------------

template <class T>
struct CpuRotations;
#define LUMO_TEST_CPU_ROTATIONS(s, T)                                                  \
    template <>                                                                        \
    struct CpuRotations<T> {                                                           \
        static constexpr auto lar2v = s##lar2v_, largv = s##largv_, lartv = s##lartv_; \
    };
LUMO_TEST_CPU_ROTATIONS(s, float)
LUMO_TEST_CPU_ROTATIONS(d, double)
LUMO_TEST_CPU_ROTATIONS(c, Complex<float>)
LUMO_TEST_CPU_ROTATIONS(z, Complex<double>)

template <class T>
class RotationVectors : public test::OnMachine {
  protected:
    using R = RealOf<T>;
    static constexpr int n = 300, incx = 2, incy = 3, incc = 2;
    Matrix<T> x = vectorOf<T>(n, incx, 1), y = vectorOf<T>(n, incy, 2), s = vectorOf<T>(n, incc, 3);
    Matrix<R> c = vectorOf<R>(n, incc, 4);

    // Relative to the element, however small it is.
    template <class V>
    static void expectNear(const Matrix<V>& wanted, const Matrix<V>& actual) {
        for (int j = 0; j < n; ++j) {
            const auto w = test::wide(wanted(0, j)), a = test::wide(actual(0, j));
            ASSERT_LE(std::abs(w - a), 8 * std::numeric_limits<R>::epsilon() * std::abs(w) +
                                           2.0 * std::numeric_limits<R>::denorm_min())
                << j << ": " << a << " instead of " << w;
        }
        EXPECT_TRUE(actual.paddingUntouched());
    }
};
TYPED_TEST_SUITE(RotationVectors, test::ElementTypes);

TYPED_TEST(RotationVectors, OnBothSides) {
    using T = TypeParam;
    auto &x = this->x, &s = this->s;
    auto& c = this->c;
    auto y = vectorOf<T>(this->n, this->incx, 2), z = vectorOf<T>(this->n, this->incx, 6);
    OnDevice<T> deviceX(x), deviceY(y), deviceZ(z), deviceS(s);
    OnDevice<RealOf<T>> deviceC(c);
    lumo::lar2v(this->n, deviceX.data(), deviceY.data(), deviceZ.data(), this->incx, deviceC.data(),
                deviceS.data(), this->incc);
    CpuRotations<T>::lar2v(&this->n, x.data.data(), y.data.data(), z.data.data(), &this->incx,
                           c.data.data(), s.data.data(), &this->incc);
    // Sums of terms of either sign: rounding is relative to the terms, which are below 8.
    expectElements(
        deviceX.download(), [&](int i, int j) { return x(i, j); }, 16);
    expectElements(
        deviceY.download(), [&](int i, int j) { return y(i, j); }, 16);
    expectElements(
        deviceZ.download(), [&](int i, int j) { return z(i, j); }, 16);
}

TYPED_TEST(RotationVectors, OfPairs) {
    using T = TypeParam;
    auto &x = this->x, &y = this->y, &s = this->s;
    OnDevice<T> deviceX(x), deviceY(y), deviceS(s);
    OnDevice<RealOf<T>> deviceC(this->c);
    lumo::lartv(this->n, deviceX.data(), this->incx, deviceY.data(), this->incy, deviceC.data(),
                deviceS.data(), this->incc);
    CpuRotations<T>::lartv(&this->n, x.data.data(), &this->incx, y.data.data(), &this->incy,
                           this->c.data.data(), s.data.data(), &this->incc);
    expectElements(
        deviceX.download(), [&](int i, int j) { return x(i, j); }, 8);
    expectElements(
        deviceY.download(), [&](int i, int j) { return y(i, j); }, 8);
}

TYPED_TEST(RotationVectors, Generated) {
    using T = TypeParam;
    using R = RealOf<T>;
    using Limits = std::numeric_limits<R>;
    auto &x = this->x, &y = this->y;
    // Each of zero, small, ordinary and large against each.
    const R factors[] = {0,    Limits::min() * 8,        std::sqrt(Limits::min()), R(1e-3), 1,
                         1000, std::sqrt(Limits::max()), Limits::max() / 8};
    for (int i = 0; i < this->n; ++i) {
        x(0, i) = factors[i % 8] * x(0, i);
        y(0, i) = factors[i / 8 % 8] * y(0, i);
    }
    OnDevice<T> deviceX(x), deviceY(y);
    OnDevice<R> deviceC(this->c);
    lumo::largv(this->n, deviceX.data(), this->incx, deviceY.data(), this->incy, deviceC.data(),
                this->incc);
    CpuRotations<T>::largv(&this->n, x.data.data(), &this->incx, y.data.data(), &this->incy,
                           this->c.data.data(), &this->incc);
    this->expectNear(x, deviceX.download());
    this->expectNear(y, deviceY.download());
    this->expectNear(this->c, deviceC.download());
}

TEST_F(ReductionLaunches, RotationChecksInOrderAndNames) {
    using T = Complex<float>;
    OnDevice<T> device(vectorOf<T>(8, 1));
    T *p = device.data(), *null = nullptr;
    float *r = reinterpret_cast<float*>(p), *noReal = nullptr;
    struct {
        int n;
        bool x, y, z;
        int incx;
        bool c, s;
        int incc;
    } bad[] = {
        {-1, false, false, false, 0, false, false, 0}, {1, false, false, false, 0, false, false, 0},
        {1, true, false, false, 0, false, false, 0},   {1, true, true, false, 0, false, false, 0},
        {1, true, true, true, 0, false, false, 0},     {1, true, true, true, 1, false, false, 0},
        {1, true, true, true, 1, true, false, 0},      {1, true, true, true, 1, true, true, 0}};
    for (int i = 0; i < 8; ++i) {
        const auto& b = bad[i];
        EXPECT_EQ(-1 - i, argumentError([&] {
            lumo::lar2v(b.n, b.x ? p : null, b.y ? p : null, b.z ? p : null, b.incx,
                        b.c ? r : noReal, b.s ? p : null, b.incc);
        }));
    }
    auto pairs = [&](int n, T* x, int incx, T* y, int incy, float* c, T* s, int incc) {
        return argumentError([&] { lumo::lartv(n, x, incx, y, incy, c, s, incc); });
    };
    auto generate = [&](int n, T* x, int incx, T* y, int incy, float* c, int incc) {
        return argumentError([&] { lumo::largv(n, x, incx, y, incy, c, incc); });
    };
    EXPECT_EQ(-1, pairs(-1, null, 0, null, 0, noReal, null, 0));
    EXPECT_EQ(-2, pairs(1, null, 0, null, 0, noReal, null, 0));
    EXPECT_EQ(-3, pairs(1, p, 0, null, 0, noReal, null, 0));
    EXPECT_EQ(-4, pairs(1, p, 1, null, 0, noReal, null, 0));
    EXPECT_EQ(-5, pairs(1, p, 1, p, 0, noReal, null, 0));
    EXPECT_EQ(-6, pairs(1, p, 1, p, 1, noReal, null, 0));
    EXPECT_EQ(-7, pairs(1, p, 1, p, 1, r, null, 0));
    EXPECT_EQ(-8, pairs(1, p, 1, p, 1, r, p, 0));
    EXPECT_EQ(-1, generate(-1, null, 0, null, 0, noReal, 0));
    EXPECT_EQ(-2, generate(1, null, 0, null, 0, noReal, 0));
    EXPECT_EQ(-3, generate(1, p, 0, null, 0, noReal, 0));
    EXPECT_EQ(-4, generate(1, p, 1, null, 0, noReal, 0));
    EXPECT_EQ(-5, generate(1, p, 1, p, 0, noReal, 0));
    EXPECT_EQ(-6, generate(1, p, 1, p, 1, noReal, 0));
    EXPECT_EQ(-7, generate(1, p, 1, p, 1, r, 0));
    EXPECT_EQ(Names{}, launchedBy([&] {
                  lumo::lar2v(0, null, null, null, 0, noReal, null, 0);
                  lumo::lartv(0, null, 0, null, 0, noReal, null, 0);
                  lumo::largv(0, null, 0, null, 0, noReal, 0);
              }));
    EXPECT_EQ((Names{"LAR2V_k<lumo::Complex<float>, float>", "LARTV_k<lumo::Complex<float> >",
                     "LARGV_k<lumo::Complex<float>, float>", "LAR2V_k<float>", "LARGV_k<float>"}),
              launchedBy([&] {
                  lumo::lar2v(1, p, p + 1, p + 2, 1, r + 6, p + 4, 1);
                  lumo::lartv(1, p, 1, p + 1, 1, r + 6, p + 4, 1);
                  lumo::largv(1, p, 1, p + 1, 1, r + 6, 1);
                  lumo::lar2v(1, r, r + 1, r + 2, 1, r + 6, r + 4, 1);
                  lumo::largv(1, r, 1, r + 1, 1, r + 6, 1);
              }));
}

// --- Matrix-vector products ---------------------------------------------------------------------

template <class T>
class Products : public test::OnMachine {
  protected:
    // Against the sum of products in double precision. A vector with a negative increment lies
    // backwards in memory.
    static void expectProduct(const test::WideMatrix& op, T alpha, const Matrix<T>& x, bool xBack,
                              T beta, const Matrix<T>& y, bool yBack, const Matrix<T>& result) {
        auto column = [](const Matrix<T>& v, bool backwards) {
            test::WideMatrix w(v.n, 1);
            for (int j = 0; j < v.n; ++j) w(backwards ? v.n - 1 - j : j, 0) = test::wide(v(0, j));
            return w;
        };
        const auto before = beta == T(0) ? test::WideMatrix(y.n, 1) : column(y, yBack);
        test::ProductSum sum(test::wide(beta), before);
        if (!(alpha == T(0))) sum.add(test::wide(alpha), op, column(x, xBack));
        EXPECT_LT(sum.ratio(column(result, yBack), test::epsilon<T>, [](int, int) { return true; }),
                  test::blasBound);
        EXPECT_TRUE(result.paddingUntouched());
    }

    void gemv(char trans, int m, int n, int incx, int incy, T alpha, T beta) {
        SCOPED_TRACE(testing::Message()
                     << trans << " " << m << " x " << n << ", increments " << incx << " " << incy);
        const auto a = Matrix<T>::random(m, n, m + 3);
        const int lengthX = trans == 'N' ? n : m, lengthY = trans == 'N' ? m : n;
        const auto x = vectorOf<T>(lengthX, std::abs(incx), 2);
        const auto y = beta == T(0) ? test::poisoned<T>(1, lengthY, std::abs(incy))
                                    : vectorOf<T>(lengthY, std::abs(incy), 3);
        OnDevice<T> deviceA(alpha == T(0) ? test::poisoned<T>(m, n, m + 3) : a), deviceX(x),
            deviceY(y);
        lumo::gemv(trans, m, n, alpha, deviceA.data(), a.ld, deviceX.data(), incx, beta,
                   deviceY.data(), incy);
        expectProduct(test::op(trans, test::WideMatrix(a)), alpha, x, incx < 0, beta, y, incy < 0,
                      deviceY.download());
    }

    void symv(char uplo, int n, int incx, int incy, T alpha, T beta) {
        SCOPED_TRACE(testing::Message()
                     << uplo << " " << n << ", increments " << incx << " " << incy);
        auto stored = Matrix<T>::random(n, n, n + 3), whole = stored;
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i)
                if (!test::inTriangle(uplo, i, j)) {
                    whole(i, j) = stored(j, i);
                    stored(i, j) = scalar<T>(std::nan(""));
                }
        const auto x = vectorOf<T>(n, std::abs(incx), 2);
        const auto y = beta == T(0) ? test::poisoned<T>(1, n, std::abs(incy))
                                    : vectorOf<T>(n, std::abs(incy), 3);
        OnDevice<T> deviceA(stored), deviceX(x), deviceY(y);
        lumo::symv(uplo, n, alpha, deviceA.data(), stored.ld, deviceX.data(), incx, beta,
                   deviceY.data(), incy);
        expectProduct(test::WideMatrix(whole), alpha, x, incx < 0, beta, y, incy < 0,
                      deviceY.download());
    }
};
TYPED_TEST_SUITE(Products, test::ElementTypes);

TYPED_TEST(Products, OfMatrices) {
    using T = TypeParam;
    const T alpha = scalar<T>(0.75, -0.5), beta = scalar<T>(-1.5, 0.25);
    for (char trans : {'T', 'C', 'N'})
        for (auto [m, n] : {test::Shape{1, 1},
                            {15, 33},
                            {16, 3},
                            {49, 100},
                            {127, 65},
                            {511, 31},
                            {512, 32},
                            {513, 1},
                            {1100, 66},
                            {1, 200}}) {
            this->gemv(trans, m, n, 1, 1, alpha, T(0));
            this->gemv(trans, m, n, 3, 2, alpha, beta);
        }
    this->gemv('T', 40, 50, -2, 1, alpha, beta);
    this->gemv('C', 40, 50, 1, -3, alpha, beta);
    this->gemv('T', 600, 40, 1, 1, T(0), beta);  // A is not read
}

TYPED_TEST(Products, OfSymmetricMatrices) {
    using T = TypeParam;
    const T alpha = scalar<T>(0.75, -0.5), beta = scalar<T>(-1.5, 0.25);
    for (char uplo : {'L', 'U'})
        for (int n : {1023, 1024, 1025, 1087}) this->symv(uplo, n, 1, 1, alpha, T(0));
    this->symv('L', 1100, 2, -3, alpha, beta);
    this->symv('U', 1088, -1, 2, alpha, beta);
}

// The launches and CUBLAS calls that f makes, with a launch's grid and block.
template <class F>
Names callsOf(F f) {
    software::startTrace();
    f();
    Names names;
    for (const software::Call& call : software::stopTrace()) {
        if (call.name == "cudaLaunch")
            names.push_back(call.arguments.at(0) + call.arguments.at(1) + call.arguments.at(2));
        else if (call.name.rfind("cublas", 0) == 0)
            names.push_back(call.name);
    }
    return names;
}

TEST_F(ReductionLaunches, WhoMultiplies) {
    using C = Complex<float>;
    OnDevice<float> a(Matrix<float>::random(65, 65)), x(vectorOf<float>(65, 1)),
        y(vectorOf<float>(65, 1));
    OnDevice<C> z(Matrix<C>::random(3, 3));
    auto calls = [&](char trans, int m, int n, float alpha, int incx, float beta, int incy) {
        return callsOf([&] {
            lumo::gemv(trans, m, n, alpha, a.data(), 65, x.data(), incx, beta, y.data(), incy);
        });
    };
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, false>(3,1,1)(32,16,1)"},
              calls('t', 65, 65, 1, 1, 0, 1));
    EXPECT_EQ(Names{"gemvt_k<float, 16, 8, true>(1,1,1)(32,16,1)"}, calls('C', 65, 32, 1, 1, 0, 1));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('N', 65, 65, 1, 1, 0, 1));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, -1, 0, 1));
    EXPECT_EQ(Names{"cublasSgemv"}, calls('T', 65, 65, 1, 1, 0, -1));
    EXPECT_EQ(Names{}, calls('T', 65, 65, 0, 1, 1, 1));
    EXPECT_EQ(Names{}, calls('N', 0, 65, 1, 1, 0, 1));
    EXPECT_EQ(Names{}, calls('T', 65, 0, 1, 1, 0, 1));
    EXPECT_EQ((Names{"4@0", "4@4", "4@8", "8@16", "8@24", "4@32", "8@40", "8@48", "4@56", "8@64",
                     "4@72"}),
              test::argumentsPushedBy([&] {
                  lumo::gemv('C', 3, 3, C(1), z.data(), 3, z.data(), 1, C(0), z.data() + 6, 1);
              }));
    auto info = [&](char trans, int m, int n, int lda, int incx, int incy) {
        return argumentError([&] {
            lumo::gemv(trans, m, n, 1.f, a.data(), lda, x.data(), incx, 0.f, y.data(), incy);
        });
    };
    EXPECT_EQ(-1, info('X', -1, -1, 0, 0, 0));
    EXPECT_EQ(-2, info('N', -1, -1, 0, 0, 0));
    EXPECT_EQ(-3, info('N', 2, -1, 0, 0, 0));
    EXPECT_EQ(-6, info('N', 2, 2, 1, 0, 0));
    EXPECT_EQ(-8, info('N', 2, 2, 2, 0, 0));
    EXPECT_EQ(-11, info('N', 2, 2, 2, 1, 0));
}

TEST_F(ReductionLaunches, WhoMultipliesSymmetricMatrices) {
    auto calls = [](char uplo, int n) {
        OnDevice<float> a(Matrix<float>(n, n)), x(Matrix<float>(1, n)), y(Matrix<float>(1, n));
        return callsOf(
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
    auto info = [&](char uplo, int n, int lda, int incx, int incy) {
        return argumentError([&] { lumo::symv(uplo, n, 1.f, &v, lda, &v, incx, 0.f, &v, incy); });
    };
    EXPECT_EQ(-1, info('X', 1024, 1, 0, 0));
    EXPECT_EQ(-5, info('L', 1024, 1023, 0, 0));
    EXPECT_EQ(-7, info('L', 1024, 1024, 0, 0));
    EXPECT_EQ(-10, info('L', 1024, 1024, 1, 0));
    start(test::machine(13));
    EXPECT_EQ(Names{"cublasSsymv"}, calls('L', 1024));
}

}  // namespace
