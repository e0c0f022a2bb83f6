// Matrix-vector products.
#include "blas/gemv/gemv.h"
#include "blas/symv/symv.h"
#include "residuals.h"
#include "support/kernels.h"
#include "trd/hermitian_product/hermitian_product.h"

namespace test {
namespace {

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

    // Neither the other triangle nor an imaginary part of the diagonal is a number.
    static void hermitian(int n) {
        SCOPED_TRACE(n);
        auto stored = Matrix<T>::random(n, n, n + 3);
        const WideMatrix whole = test::hermitian('L', WideMatrix(stored));
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < j; ++i) stored(i, j) = scalar<T>(std::nan(""));
            stored(j, j) = scalar<T>(wide(stored(j, j)).real(), std::nan(""));
        }
        const OnDevice a(stored), parts(poisoned<T>(n, lumo::hermitianProductParts<T>(n)));
        expectProduct(whole, T(1), 1, T(0), 1, [&](T* x, T* y) {
            lumo::hermitianProduct(n, a.data(), a.ld(), x, y, parts.data());
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

// In one part and in several, as a GPU has them and as a CPU.
TYPED_TEST(Products, OfHermitianMatrices) {
    for (bool production : {false, true}) {
        if (production && onSoftwareDevice())
            this->start(software::defaultMachine(), Schedule::production);
        for (int n : {1, 2, 3, 5, 31, 64, 67, 130, 513, 600}) this->hermitian(n);
    }
}

}  // namespace
}  // namespace test
