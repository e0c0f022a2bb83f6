// Copies: LACPY, matrices, vectors, single elements, and the conversions.
#include <array>
#include <type_traits>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/Precision/Precision.h"
#include "support/kernels.h"

namespace test {
namespace {

using lumo::Complex;

template <class T>
class CopyKernels : public OnMachine {};
TYPED_TEST_SUITE(CopyKernels, ElementTypes);

TYPED_TEST(CopyKernels, LacpyCopiesThePartAndNothingElse) {
    for (auto [m, n] : shapes<TypeParam>())
        for (char uplo : {'U', 'l', 'A', 'f'}) {
            SCOPED_TRACE(uplo);
            const OnDevice<TypeParam> a(m, n, 3), b(m, n, 1);
            lumo::LACPY(uplo, m, n, a.data(), a.ld(), b.data(), b.ld());
            expectElements(b, [&, uplo](int i, int j) {
                const bool inPart = uplo == 'U' ? i <= j : uplo == 'l' ? i >= j : true;
                return inPart ? a(i, j) : b(i, j);
            });
        }
}

TYPED_TEST(CopyKernels, MatricesVectorsElements) {
    using T = TypeParam;
    for (auto [m, n] : shapes<T>()) {
        const OnDevice<T> from(m, n, 2), to(poisoned<T>(m, n, m + 1));
        lumo::copyMatrix(m, n, from.data(), from.ld(), to.data(), to.ld());
        expectElements(to, from);
    }
    for (auto [incx, incy] : {std::pair{1, 1}, {3, 2}}) {
        const OnDevice from(vectorOf<T>(1500, incx)), to(poisoned<T>(1, 1500, incy));
        lumo::copyVector(1500, from.data(), incx, to.data(), incy);
        expectElements(to, from);
    }
    const OnDevice two(vectorOf<T>(2, 1));
    lumo::copyElement(two.data(), two.data() + 1);
    expectElements(two, [&](int, int) { return two(0, 0); });
}

template <class R>
class Conversions : public OnMachine {
  protected:
    template <class From, class To>
    static void ofUpperTriangle() {
        for (auto [m, n] : shapes<From>()) {
            const OnDevice<From> a(m, n, 3);
            const OnDevice<To> b(m, n, 1);
            lumo::convertTriangle(m, n, a.data(), a.ld(), b.data(), b.ld());
            expectElements(b, [&](int i, int j) {
                return i <= j ? scalar<To>(wide(a(i, j)).real(), wide(a(i, j)).imag()) : b(i, j);
            });
        }
    }
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Conversions, Reals);

TYPED_TEST(Conversions, BetweenRealAndComplex) {
    using T = Complex<TypeParam>;
    const OnDevice real(vectorOf<TypeParam>(700, 3));
    const auto numbers = vectorOf<T>(700, 2);
    const OnDevice fromReal(numbers), z(numbers);
    lumo::copyVectorRealToComplex(700, fromReal.data(), 2, real.data(), 3);
    expectElements(fromReal, [&](int i, int j) { return T(real(i, j)); });
    lumo::copyVectorComplexToReal(700, z.data(), 2, real.data(), 3);
    expectElements(real, [&](int i, int j) { return z(i, j).re; });
    lumo::copyElementComplexToReal(z.data() + 2, real.data());
    expectElements(real, [&](int i, int j) { return z(i, j == 0 ? 1 : j).re; });
    lumo::copyElementRealToComplex(real.data(), z.data() + 4);
    expectElements(z, [&](int i, int j) { return j == 2 ? T(z(0, 1).re) : z(i, j); });
}

TYPED_TEST(Conversions, PrecisionOfTheUpperTriangle) {
    using R = TypeParam;
    using Other = std::conditional_t<std::is_same_v<R, float>, double, float>;
    this->template ofUpperTriangle<R, Other>();
    this->template ofUpperTriangle<Complex<R>, Complex<Other>>();
}

class CopyLaunches : public OnSoftwareDevice {};

TEST_F(CopyLaunches, LacpyChecksInOrder) {
    float x = 0, *null = nullptr;
    expectChecks(&lumo::LACPY<float>, {1, 2, 3, 4, 5, 6, 7}, {'x', -1, -1, null, 1, null, 1},
                 {'f', 2, 2, &x, 2, &x, 2});
    auto info = [&](char uplo, int m, int n) {
        return argumentError([&] { lumo::LACPY(uplo, m, n, null, 0, null, 0); });
    };
    EXPECT_EQ(-1, info('\0', 1, 1));
    EXPECT_EQ(-3, info('f', 0, -1));
    EXPECT_EQ(0, info('A', 0, 5));
    EXPECT_EQ(0, info('A', 5, 0));
}

TEST_F(CopyLaunches, LettersChooseTheKernel) {
    const OnDevice<float> a(2, 2, 0), b(2, 2, 0);
    for (auto [uplo, part] : {std::pair{'l', 'L'}, {'U', 'U'}, {'a', 'G'}, {'F', 'G'}})
        EXPECT_EQ(
            Names{std::string("LACPY_") + part + "_Kernel<float>"},
            launchedBy([&, uplo = uplo] { lumo::LACPY(uplo, 2, 2, a.data(), 2, b.data(), 2); }));
}

TEST_F(CopyLaunches, NothingForGuardedArguments) {
    const OnDevice<double> a(2, 2, 0);
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

}  // namespace
}  // namespace test
