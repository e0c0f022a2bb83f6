// Copies: LACPY, matrices, vectors, single elements, and the conversions.
#include <array>
#include <type_traits>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/Precision/Precision.h"
#include "support/kernels.h"

namespace {

using lumo::Complex;
using test::argumentError;
using test::expectElements;
using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;
using test::vectorOf;

bool inPart(char uplo, int i, int j) {
    return uplo == 'U' || uplo == 'u' ? i <= j : uplo == 'L' || uplo == 'l' ? i >= j : true;
}

template <class T>
class CopyKernels : public test::OnMachine {};
TYPED_TEST_SUITE(CopyKernels, test::ElementTypes);

TYPED_TEST(CopyKernels, LacpyCopiesThePartAndNothingElse) {
    using T = TypeParam;
    for (auto [m, n] : test::shapes)
        for (char uplo : {'U', 'l', 'A', 'f'}) {
            SCOPED_TRACE(uplo);
            const auto a = Matrix<T>::random(m, n, m + 3), b = Matrix<T>::random(m, n, m + 1, 2);
            OnDevice<T> from(a), to(b);
            lumo::LACPY(uplo, m, n, from.data(), from.ld(), to.data(), to.ld());
            expectElements(to.download(),
                           [&](int i, int j) { return inPart(uplo, i, j) ? a(i, j) : b(i, j); });
        }
}

TYPED_TEST(CopyKernels, WholeMatrix) {
    using T = TypeParam;
    for (auto [m, n] : test::shapes) {
        const auto a = Matrix<T>::random(m, n, m + 2);
        OnDevice<T> from(a), to(test::poisoned<T>(m, n, m + 1));
        lumo::copyMatrix(m, n, from.data(), from.ld(), to.data(), to.ld());
        expectElements(to.download(), a);
    }
}

TYPED_TEST(CopyKernels, VectorsAndElements) {
    using T = TypeParam;
    for (auto [incx, incy] : {std::pair{1, 1}, {3, 2}}) {
        const auto x = vectorOf<T>(1500, incx);
        OnDevice<T> from(x), to(test::poisoned<T>(1, 1500, incy));
        lumo::copyVector(1500, from.data(), incx, to.data(), incy);
        expectElements(to.download(), x);
    }
    const auto x = vectorOf<T>(2, 1);
    OnDevice<T> memory(x);
    lumo::copyElement(memory.data(), memory.data() + 1);
    EXPECT_EQ(x(0, 0), memory.download()(0, 1));
}

template <class R>
class Conversions : public test::OnMachine {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Conversions, Reals);

TYPED_TEST(Conversions, BetweenRealAndComplex) {
    using R = TypeParam;
    using T = Complex<R>;
    const auto reals = vectorOf<R>(700, 3);
    const auto numbers = vectorOf<T>(700, 2);
    OnDevice<R> r(reals);
    OnDevice<T> z(numbers);
    lumo::copyVectorRealToComplex(700, z.data(), 2, r.data(), 3);
    expectElements(z.download(), [&](int i, int j) { return T(reals(i, j)); });

    OnDevice<T> again(numbers);
    lumo::copyVectorComplexToReal(700, again.data(), 2, r.data(), 3);
    expectElements(r.download(), [&](int i, int j) { return numbers(i, j).re; });

    lumo::copyElementComplexToReal(again.data() + 2, r.data());
    EXPECT_EQ(numbers(0, 1).re, r.download()(0, 0));
    lumo::copyElementRealToComplex(r.data(), again.data() + 4);
    EXPECT_EQ(T(numbers(0, 1).re), again.download()(0, 2));
}

template <class From, class To>
void convertsUpperTriangle() {
    for (auto [m, n] : test::shapes) {
        const auto a = Matrix<From>::random(m, n, m + 3);
        const auto b = Matrix<To>::random(m, n, m + 1, 2);
        OnDevice<From> from(a);
        OnDevice<To> to(b);
        lumo::convertTriangle(m, n, from.data(), from.ld(), to.data(), to.ld());
        expectElements(to.download(), [&](int i, int j) {
            return i <= j ? test::scalar<To>(test::wide(a(i, j)).real(), test::wide(a(i, j)).imag())
                          : b(i, j);
        });
    }
}

TYPED_TEST(Conversions, PrecisionOfTheUpperTriangle) {
    using R = TypeParam;
    using Other = std::conditional_t<std::is_same_v<R, float>, double, float>;
    convertsUpperTriangle<R, Other>();
    convertsUpperTriangle<Complex<R>, Complex<Other>>();
}

class CopyLaunches : public test::OnSoftwareDevice {};

TEST_F(CopyLaunches, LacpyChecksInOrder) {
    float x = 0, *null = nullptr;
    auto info = [&](char uplo, int m, int n, float* a, int lda, float* b, int ldb) {
        return argumentError([&] { lumo::LACPY(uplo, m, n, a, lda, b, ldb); });
    };
    EXPECT_EQ(-1, info('x', -1, -1, null, 0, null, 0));
    EXPECT_EQ(-1, info('\0', 1, 1, &x, 1, &x, 1));
    EXPECT_EQ(-2, info('a', -1, -1, null, 0, null, 0));
    EXPECT_EQ(-3, info('f', 0, -1, null, 0, null, 0));
    EXPECT_EQ(-4, info('u', 2, 2, null, 1, null, 1));
    EXPECT_EQ(-5, info('l', 2, 2, &x, 1, null, 1));
    EXPECT_EQ(-6, info('A', 2, 2, &x, 2, null, 1));
    EXPECT_EQ(-7, info('A', 2, 2, &x, 2, &x, 1));
    EXPECT_EQ(0, info('A', 0, 5, null, 0, null, 0));
    EXPECT_EQ(0, info('A', 5, 0, null, 0, null, 0));
}

TEST_F(CopyLaunches, LettersChooseTheKernel) {
    OnDevice<float> a(Matrix<float>(2, 2)), b(Matrix<float>(2, 2));
    auto launched = [&](char uplo) {
        return launchedBy([&] { lumo::LACPY(uplo, 2, 2, a.data(), 2, b.data(), 2); });
    };
    EXPECT_EQ(Names{"LACPY_L_Kernel<float>"}, launched('l'));
    EXPECT_EQ(Names{"LACPY_U_Kernel<float>"}, launched('U'));
    EXPECT_EQ(Names{"LACPY_G_Kernel<float>"}, launched('a'));
    EXPECT_EQ(Names{"LACPY_G_Kernel<float>"}, launched('F'));
}

TEST_F(CopyLaunches, NothingForGuardedArguments) {
    OnDevice<double> a(Matrix<double>(2, 2));
    double* p = a.data();
    EXPECT_EQ(
        Names{}, launchedBy([&] {
            for (auto [n, incx, incy] : {std::array{0, 1, 1}, {-1, 1, 1}, {2, 0, 1}, {2, 1, 0}})
                lumo::copyVector(n, p, incx, p, incy);
            lumo::copyMatrix(0, 2, p, 2, p, 2);
            lumo::copyMatrix(2, 0, p, 2, p, 2);
            lumo::LACPY<double>('A', 0, 2, p, 2, p, 2);
        }));
}

// What does not fit one grid is cut, and the parts know on which side of the diagonal they lie.
TEST_F(CopyLaunches, MatricesBeyondOneGrid) {
    for (auto [m, n] : {std::pair{test::beyondOneGrid, 2}, {2, test::beyondOneGrid}}) {
        const auto a = Matrix<float>::random(m, n);
        const auto b = Matrix<float>::random(m, n, 0, 2);
        OnDevice<float> from(a);
        for (char uplo : {'U', 'L', 'A'}) {
            OnDevice<float> to(b);
            lumo::LACPY(uplo, m, n, from.data(), from.ld(), to.data(), to.ld());
            expectElements(to.download(),
                           [&](int i, int j) { return inPart(uplo, i, j) ? a(i, j) : b(i, j); });
        }
        OnDevice<double> doubles(Matrix<double>(m, n));
        lumo::convertTriangle(m, n, from.data(), from.ld(), doubles.data(), doubles.ld());
        expectElements(doubles.download(), [&](int i, int j) {
            return i <= j ? double(a(i, j)) : Matrix<double>::mark();
        });
    }
}

}  // namespace
