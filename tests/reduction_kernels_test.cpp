// Reflectors, matrix-vector products.
#include "basic/larfg/larfg.h"
#include "blas/gemv/gemvt.h"
#include "blas/symv/symv.h"
#include "residuals.h"
#include "support/kernels.h"

namespace test {
namespace {

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

}  // namespace
}  // namespace test
