// Sums, differences, conjugation, complement, scaling.
#include <array>

#include "basic/Complement/Complement.h"
#include "basic/Conjugate/Conjugate.h"
#include "basic/MADD/MADD.h"
#include "basic/MakeReal/MakeReal.h"
#include "basic/Scale/Scale.h"
#include "basic/Subtract/Subtract.h"
#include "basic/Transpose/Transpose.h"
#include "support/kernels.h"

namespace {

using lumo::Complex;
using test::expectElements;
using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;
using test::vectorOf;

// Products may be fused with sums on the device.
constexpr double ulps = 8;

template <class T>
class Arithmetic : public test::OnMachine {
  protected:
    using R = test::RealOf<T>;

    static Matrix<T> operand(bool transposed, int m, int n, unsigned seed) {
        return transposed ? Matrix<T>::random(n, m, n + 2, seed)
                          : Matrix<T>::random(m, n, m + 3, seed);
    }
    static T element(const Matrix<T>& a, bool transposed, int i, int j) {
        return transposed ? a(j, i) : a(i, j);
    }

    void madd(char transa, char transb, int m, int n) {
        const bool ta = transa == 'T', tb = transb == 'T';
        const auto a = operand(ta, m, n, 1), b = operand(tb, m, n, 2);
        const R alpha = R(1.5), beta = R(-0.75);
        OnDevice<T> deviceA(a), deviceB(b), c(test::poisoned<T>(m, n, m + 1));
        EXPECT_EQ(cudaSuccess,
                  lumo::MADD(transa, transb, m, n, deviceA.data(), deviceA.ld(), deviceB.data(),
                             deviceB.ld(), c.data(), c.ld(), alpha, beta));
        expectElements(
            c.download(),
            [&](int i, int j) {
                return alpha * element(a, ta, i, j) + beta * element(b, tb, i, j);
            },
            ulps);
    }

    // A in memory for both shapes, m x n and n x m; what belongs to neither stays as it is.
    void subtract(char transa, char transb, bool ta, bool tb, int m, int n) {
        const int side = ta ? std::max(m, n) : 0;
        const auto a = ta ? Matrix<T>::random(side, side, side + 2) : operand(false, m, n, 1);
        const auto b = operand(tb, m, n, 2);
        OnDevice<T> deviceA(a), deviceB(b);
        EXPECT_EQ(cudaSuccess, lumo::subtractMatrix(transa, transb, m, n, deviceA.data(),
                                                    deviceA.ld(), deviceB.data(), deviceB.ld()));
        expectElements(deviceA.download(), [&](int i, int j) {
            if (i >= m || j >= n) return a(i, j);
            return element(a, ta, i, j) - element(b, tb, i, j);
        });
    }
};
TYPED_TEST_SUITE(Arithmetic, test::ElementTypes);

TYPED_TEST(Arithmetic, SumsOfMatrices) {
    for (auto [m, n] : test::shapes)
        // "C" and "t" transpose nothing.
        for (auto [transa, transb] : {std::pair{'N', 'C'}, {'t', 'T'}, {'T', 'N'}, {'T', 'T'}}) {
            SCOPED_TRACE((std::string{transa, transb}));
            this->madd(transa, transb, m, n);
        }
}

TYPED_TEST(Arithmetic, DifferencesInPlace) {
    struct Letters {
        char transa, transb;
        bool ta, tb;
    };
    // (T, C) leaves B as it is, (C, anything) transposes it.
    for (Letters l : {Letters{'N', 'N', false, false},
                      {'t', 'c', false, false},
                      {'N', 'T', false, true},
                      {'N', 'C', false, true},
                      {'T', 'N', true, false},
                      {'T', 'C', true, false},
                      {'T', 'T', true, true},
                      {'C', 'N', true, true},
                      {'C', 'C', true, true}})
        for (auto [m, n] : {test::Shape{1, 1},
                            {15, 17},
                            {33, 16},
                            {64, 65},
                            {130, 130},
                            {20, 150},
                            {150, 20},
                            {600, 500}}) {
            SCOPED_TRACE((std::string{l.transa, l.transb}));
            this->subtract(l.transa, l.transb, l.ta, l.tb, m, n);
        }
}

TYPED_TEST(Arithmetic, Vectors) {
    using T = TypeParam;
    for (auto [incx, incy] : {std::pair{1, 1}, {3, 2}}) {
        const auto x = vectorOf<T>(1500, incx);
        OnDevice<T> conjugated(x), source(x), complement(test::poisoned<T>(1, 1500, incy));
        lumo::conjugateVector(1500, conjugated.data(), incx);
        expectElements(conjugated.download(),
                       [&](int i, int j) { return lumo::conjugate(x(i, j)); });
        lumo::complementVector(1500, source.data(), incx, complement.data(), incy);
        expectElements(complement.download(), [&](int i, int j) { return T(1) - x(i, j); });

        const T alpha = test::scalar<T>(-3, 0.5);
        Matrix<T> factor(1, 1);
        factor(0, 0) = alpha;
        OnDevice<T> scalar(factor), multiplied(x), divided(x);
        lumo::scale(1500, multiplied.data(), scalar.data(), incx, 2);
        lumo::scale(1500, divided.data(), scalar.data(), incx, 0);
        expectElements(
            multiplied.download(), [&](int i, int j) { return x(i, j) * alpha; }, ulps);
        expectElements(
            divided.download(), [&](int i, int j) { return x(i, j) / alpha; }, ulps);
    }
    const auto x = vectorOf<T>(2, 1);
    OnDevice<T> element(x);
    lumo::complementElement(element.data(), element.data() + 1);
    EXPECT_EQ(T(1) - x(0, 0), element.download()(0, 1));
}

template <class R>
class ComplexKernels : public test::OnMachine {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexKernels, Reals);

TYPED_TEST(ComplexKernels, ConjugatedMatricesAndRealElements) {
    using T = Complex<TypeParam>;
    for (auto [m, n] : test::shapes) {
        const auto before = Matrix<T>::random(m, n, m + 3);
        OnDevice<T> whole(before), lower(before);
        lumo::conjugateMatrix(m, n, whole.data(), whole.ld());
        lumo::conjugateMatrixLower(m, n, lower.data(), lower.ld());
        expectElements(whole.download(),
                       [&](int i, int j) { return lumo::conjugate(before(i, j)); });
        expectElements(lower.download(), [&](int i, int j) {
            return i >= j ? lumo::conjugate(before(i, j)) : before(i, j);
        });
        lumo::makeReal(whole.data());
        EXPECT_EQ(T(before(0, 0).re), whole.download()(0, 0));
    }
}

class ArithmeticLaunches : public test::OnSoftwareDevice {};

TEST_F(ArithmeticLaunches, LettersChooseTheKernel) {
    OnDevice<float> a(Matrix<float>(2, 2)), b(Matrix<float>(2, 2)), c(Matrix<float>(2, 2));
    for (auto [letters, kernel] : {std::pair{"CC", "NN"}, {"NT", "NT"}, {"TC", "TN"}, {"TT", "TT"}})
        EXPECT_EQ(Names{std::string("MADD_") + kernel + "_k<float, float>"},
                  launchedBy([&, letters = letters] {
                      lumo::MADD(letters[0], letters[1], 2, 2, a.data(), 2, b.data(), 2, c.data(),
                                 2, 1.0f, 1.0f);
                  }));
    for (auto [letters, kernel] :
         {std::pair{"Nc", "NN"}, {"NC", "NT"}, {"TC", "TN"}, {"TT", "TT"}, {"CN", "TT"}})
        EXPECT_EQ(Names{std::string("SubtractMatrix_") + kernel + "_k<float>"},
                  launchedBy([&, letters = letters] {
                      lumo::subtractMatrix(letters[0], letters[1], 2, 2, a.data(), 2, b.data(), 2);
                  }));
}

TEST_F(ArithmeticLaunches, NothingForGuardedArguments) {
    using T = Complex<float>;
    OnDevice<T> a(Matrix<T>(2, 2));
    T* p = a.data();
    EXPECT_EQ(
        Names{}, launchedBy([&] {
            for (auto [n, incx, incy] : {std::array{0, 1, 1}, {-1, 1, 1}, {2, 0, 1}, {2, 1, 0}})
                lumo::complementVector(n, p, incx, p, incy);
            for (auto [n, inc] : {std::pair{0, 1}, {-1, 1}, {2, 0}}) {
                lumo::conjugateVector(n, p, inc);
                lumo::scale(n, p, p, inc, 1);
            }
            for (auto [m, n, lda] : {std::array{0, 2, 2}, {2, 0, 2}, {2, 2, 0}}) {
                lumo::conjugateMatrix(m, n, p, lda);
                lumo::conjugateMatrixLower(m, n, p, lda);
            }
            EXPECT_EQ(cudaSuccess, lumo::MADD('N', 'N', 0, 2, p, 2, p, 2, p, 2, 1.f, 1.f));
            EXPECT_EQ(cudaSuccess, lumo::subtractMatrix('T', 'N', 2, 0, p, 2, p, 2));
        }));
}

// Sums and differences tell their caller when a launch could not be configured; nobody else does.
TEST_F(ArithmeticLaunches, AFailedConfigurationLaunchesNothing) {
    OnDevice<float> a(Matrix<float>(2, 2)), b(Matrix<float>(2, 2));
    auto failing = [&](auto f) {
        software::inject({1, "cudaConfigureCall", 9, 14});
        EXPECT_EQ(Names{}, launchedBy(f));
        EXPECT_EQ("cudaConfigureCall", software::removeFault());
        EXPECT_EQ(9, cudaGetLastError());
    };
    failing([&] {
        EXPECT_EQ(9, lumo::MADD('N', 'T', 2, 2, a.data(), 2, a.data(), 2, b.data(), 2, 1.f, 1.f));
    });
    failing([&] { EXPECT_EQ(9, lumo::subtractMatrix('N', 'N', 2, 2, a.data(), 2, b.data(), 2)); });
    failing([&] { EXPECT_EQ(9, lumo::subtractMatrix('T', 'N', 2, 2, a.data(), 2, b.data(), 2)); });
    failing([&] { lumo::conjugateVector(2, a.data(), 1); });
}

TEST_F(ArithmeticLaunches, MatricesBeyondOneGrid) {
    for (auto [m, n] : {std::pair{test::beyondOneGrid, 2}, {2, test::beyondOneGrid}}) {
        const auto a = Matrix<float>::random(m, n), b = Matrix<float>::random(n, m, 0, 2);
        OnDevice<float> straight(a), transposed(b), c(test::poisoned<float>(m, n));
        lumo::MADD('N', 'T', m, n, straight.data(), straight.ld(), transposed.data(),
                   transposed.ld(), c.data(), c.ld(), 1.0f, -1.0f);
        expectElements(c.download(), [&](int i, int j) { return a(i, j) - b(j, i); });
        lumo::transpose(c.data(), c.ld(), transposed.data(), transposed.ld(), n, m);
        expectElements(c.download(), [&](int i, int j) { return b(j, i); });
        lumo::subtractMatrix('N', 'T', m, n, straight.data(), straight.ld(), transposed.data(),
                             transposed.ld());
        expectElements(straight.download(), [&](int i, int j) { return a(i, j) - b(j, i); });
    }
    using T = Complex<float>;
    for (auto [m, n] : {std::pair{test::beyondOneGrid, 2}, {2, test::beyondOneGrid}}) {
        const auto before = Matrix<T>::random(m, n);
        OnDevice<T> lower(before);
        lumo::conjugateMatrixLower(m, n, lower.data(), lower.ld());
        expectElements(lower.download(), [&](int i, int j) {
            return i >= j ? lumo::conjugate(before(i, j)) : before(i, j);
        });
    }
}

}  // namespace
