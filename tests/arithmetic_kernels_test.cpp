// Sums, differences, transposes, conjugates, complements, scaling.
#include <array>
#include <functional>

#include "basic/Complement/Complement.h"
#include "basic/Conjugate/Conjugate.h"
#include "basic/MADD/MADD.h"
#include "basic/MakeReal/MakeReal.h"
#include "basic/Scale/Scale.h"
#include "basic/Subtract/Subtract.h"
#include "basic/Transpose/Transpose.h"
#include "support/kernels.h"

namespace test {
namespace {

using lumo::Complex;
using lumo::conjugate;

// Products may be fused with sums on the device.
constexpr double ulps = 8;

// X and its elements, where op(X) is m x n.
template <class T>
OnDevice<T> operand(bool transposed, int m, int n, int pad) {
    return transposed ? OnDevice<T>(n, m, pad) : OnDevice<T>(m, n, pad);
}
template <class T>
T element(const OnDevice<T>& x, bool transposed, int i, int j) {
    return transposed ? x(j, i) : x(i, j);
}

template <class T>
class Arithmetic : public OnMachine {
  protected:
    void madd(char transa, char transb, int m, int n) {
        const bool ta = transa == 'T', tb = transb == 'T';
        const RealOf<T> alpha = 1.5, beta = -0.75;
        const auto a = operand<T>(ta, m, n, 3), b = operand<T>(tb, m, n, 2);
        const OnDevice c(poisoned<T>(m, n, m + 1));
        EXPECT_EQ(cudaSuccess, lumo::MADD(transa, transb, m, n, a.data(), a.ld(), b.data(), b.ld(),
                                          c.data(), c.ld(), alpha, beta));
        auto sum = [&](int i, int j) {
            return alpha * element(a, ta, i, j) + beta * element(b, tb, i, j);
        };
        expectElements(c, sum, ulps);
    }

    // A in memory for both shapes, m x n and n x m; what belongs to neither stays as it is.
    void subtract(char transa, char transb, bool ta, bool tb, int m, int n) {
        const auto a = ta ? OnDevice<T>(std::max(m, n), std::max(m, n), 2) : OnDevice<T>(m, n, 3);
        const auto b = operand<T>(tb, m, n, 1);
        EXPECT_EQ(cudaSuccess,
                  lumo::subtractMatrix(transa, transb, m, n, a.data(), a.ld(), b.data(), b.ld()));
        expectElements(a, [&](int i, int j) {
            if (i >= m || j >= n) return a(i, j);
            return element(a, ta, i, j) - element(b, tb, i, j);
        });
    }
};
TYPED_TEST_SUITE(Arithmetic, ElementTypes);

TYPED_TEST(Arithmetic, SumsOfMatrices) {
    for (auto [m, n] : shapes<TypeParam>())
        // "C" and "t" transpose nothing.
        for (auto [transa, transb] : {std::pair{'N', 'C'}, {'t', 'T'}, {'T', 'N'}, {'T', 'T'}}) {
            SCOPED_TRACE((std::string{transa, transb}));
            this->madd(transa, transb, m, n);
        }
}

TYPED_TEST(Arithmetic, DifferencesInPlace) {
    constexpr Shape sizes[] = {{1, 1},     {15, 17},  {33, 16},  {64, 65},
                               {130, 130}, {20, 150}, {150, 20}, {600, 500}};
    const struct {
        char transa, transb;
        bool ta, tb;
    } cases[] = {
        {'N', 'N', false, false}, {'t', 'c', false, false}, {'N', 'T', false, true},
        {'N', 'C', false, true},  {'T', 'T', true, true},   {'T', 'N', true, false},
        {'T', 'C', true, false},  // leaves B as it is
        {'C', 'N', true, true},   // transposes it, whatever its letter
        {'C', 'C', true, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE((std::string{c.transa, c.transb}));
        for (auto [m, n] : sizes) this->subtract(c.transa, c.transb, c.ta, c.tb, m, n);
    }
    for (auto [m, n] : beyondOneGrid<TypeParam>()) this->subtract('N', 'T', false, true, m, n);
}

TYPED_TEST(Arithmetic, Transposes) {
    using T = TypeParam;
    for (bool conjugated : {false, true}) {
        auto flipped = [conjugated](const OnDevice<T>& a) {
            return [&a, conjugated](int i, int j) {
                return conjugated ? conjugate(a(j, i)) : a(j, i);
            };
        };
        for (auto [m, n] : shapes<T>()) {
            const OnDevice<T> from(m, n, 3), to(poisoned<T>(n, m, n + 2));
            lumo::transpose(to.data(), to.ld(), from.data(), from.ld(), m, n, conjugated);
            expectElements(to, flipped(from));
        }
        for (int n : {1, 15, 16, 33, 64, 65, 130}) {
            const OnDevice<T> a(n, n, 1);
            lumo::transposeInplace(a.data(), a.ld(), n, conjugated);
            expectElements(a, flipped(a));
        }
    }
}

TYPED_TEST(Arithmetic, Vectors) {
    using T = TypeParam;
    const T alpha = scalar<T>(-3, 0.5);
    const OnDevice factor(filled<T>(1, 1, alpha));
    for (auto [incx, incy] : {std::pair{1, 1}, {3, 2}}) {
        const auto before = vectorOf<T>(1500, incx);
        const OnDevice x(before), conjugated(before), multiplied(before), divided(before);
        const OnDevice complement(poisoned<T>(1, 1500, incy));
        lumo::complementVector(1500, x.data(), incx, complement.data(), incy);
        expectElements(complement, [&](int i, int j) { return T(1) - x(i, j); });
        lumo::conjugateVector(1500, conjugated.data(), incx);
        expectElements(conjugated, [&](int i, int j) { return conjugate(x(i, j)); });
        lumo::scale(1500, multiplied.data(), factor.data(), incx, 2);
        auto product = [&](int i, int j) { return x(i, j) * alpha; };
        expectElements(multiplied, product, ulps);
        lumo::scale(1500, divided.data(), factor.data(), incx, 0);
        auto quotient = [&](int i, int j) { return x(i, j) / alpha; };
        expectElements(divided, quotient, ulps);
    }
    const OnDevice two(vectorOf<T>(2, 1));
    lumo::complementElement(two.data(), two.data() + 1);
    expectElements(two, [&](int, int j) { return j == 0 ? two(0, 0) : T(1) - two(0, 0); });
}

template <class R>
class ComplexKernels : public OnMachine {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexKernels, Reals);

TYPED_TEST(ComplexKernels, ConjugatedMatricesAndRealElements) {
    using T = Complex<TypeParam>;
    for (auto [m, n] : shapes<TypeParam>()) {
        const OnDevice<T> whole(m, n, 3), lower(m, n, 3), real(m, n, 3);
        lumo::conjugateMatrix(m, n, whole.data(), whole.ld());
        expectElements(whole, [&](int i, int j) { return conjugate(whole(i, j)); });
        lumo::conjugateMatrixLower(m, n, lower.data(), lower.ld());
        expectElements(lower,
                       [&](int i, int j) { return i >= j ? conjugate(lower(i, j)) : lower(i, j); });
        lumo::makeReal(real.data());
        expectElements(real,
                       [&](int i, int j) { return i + j == 0 ? T(real(0, 0).re) : real(i, j); });
    }
}

class ArithmeticLaunches : public OnSoftwareDevice {};

TEST_F(ArithmeticLaunches, LettersChooseTheKernel) {
    const OnDevice<float> a(2, 2, 0), b(2, 2, 0);
    for (auto [letters, kernel] : {std::pair{"CC", "NN"}, {"NT", "NT"}, {"TC", "TN"}, {"TT", "TT"}})
        EXPECT_EQ(Names{std::string("MADD_") + kernel + "_k<float, float>"},
                  launchedBy([&, letters = letters] {
                      lumo::MADD(letters[0], letters[1], 2, 2, a.data(), 2, a.data(), 2, b.data(),
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
    const OnDevice<Complex<float>> a(2, 2, 0);
    auto* p = a.data();
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
    const OnDevice<float> a(2, 2, 0), b(2, 2, 0);
    const std::function<int()> calls[] = {
        [&] { return lumo::MADD('N', 'T', 2, 2, a.data(), 2, a.data(), 2, b.data(), 2, 1.f, 1.f); },
        [&] { return lumo::subtractMatrix('N', 'N', 2, 2, a.data(), 2, b.data(), 2); },
        [&] { return lumo::subtractMatrix('T', 'N', 2, 2, a.data(), 2, b.data(), 2); },
        [&] {
            lumo::conjugateVector(2, a.data(), 1);
            return 9;
        },
    };
    for (const auto& call : calls) {
        software::inject({1, "cudaConfigureCall", 9, 14});
        EXPECT_EQ(Names{}, launchedBy([&] { EXPECT_EQ(9, call()); }));
        EXPECT_EQ("cudaConfigureCall", software::removeFault());
        EXPECT_EQ(9, cudaGetLastError());
    }
}

}  // namespace
}  // namespace test
