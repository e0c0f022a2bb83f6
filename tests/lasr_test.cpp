// Plane rotations on matrices.
#include "basic/lasr/lasr.h"

#include "support/kernels.h"

namespace {

using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;
using test::RealOf;

// Cosines and sines, column by column; every seventh rotation is the identity.
template <class Real>
Matrix<Real> rotations(int planes) {
    Matrix<Real> cs(std::max(1, planes), 2);
    test::Random random(3);
    for (int k = 0; k < planes; ++k) {
        const double angle = k % 7 == 5 ? 0 : 3 * random.next<double>();
        cs(k, 0) = Real(std::cos(angle));
        cs(k, 1) = Real(std::sin(angle));
    }
    return cs;
}

// LAPACK's loop, in double precision.
template <class T>
std::vector<std::complex<double>> rotated(char side, char direct, const Matrix<T>& a,
                                          const Matrix<RealOf<T>>& cs) {
    std::vector<std::complex<double>> x(std::size_t(a.m) * a.n);
    for (int j = 0; j < a.n; ++j)
        for (int i = 0; i < a.m; ++i) x[std::size_t(j) * a.m + i] = test::wide(a(i, j));
    const bool left = side == 'L';
    const int planes = (left ? a.m : a.n) - 1, lines = left ? a.n : a.m;
    const std::size_t step = left ? 1 : a.m, line = left ? a.m : 1;
    for (int r = 0; r < planes; ++r) {
        const int k = direct == 'F' ? r : planes - 1 - r;
        const double c = cs(k, 0), s = cs(k, 1);
        for (int i = 0; i < lines; ++i) {
            auto &one = x[k * step + i * line], &two = x[(k + 1) * step + i * line];
            const auto old = two;
            two = c * old - s * one;
            one = s * old + c * one;
        }
    }
    return x;
}

template <class T>
class Rotations : public test::OnMachine {};
TYPED_TEST_SUITE(Rotations, test::ElementTypes);

// Sizes around a group of rotations, a block of the GPU and a strip of the CPU.
TYPED_TEST(Rotations, EqualAPlainLoop) {
    using T = TypeParam;
    for (auto [lines, along] :
         {std::pair{1, 2}, {3, 1}, {63, 8}, {64, 9}, {129, 10}, {1000, 33}, {4099, 18}})
        for (char side : {'L', 'R'})
            for (char direct : {'F', 'B'}) {
                const int m = side == 'L' ? along : lines, n = side == 'L' ? lines : along;
                const auto before = Matrix<T>::random(m, n, m + 3);
                const auto cs = rotations<RealOf<T>>(along - 1);
                OnDevice<T> a(before);
                OnDevice<RealOf<T>> onDevice(cs);
                lumo::LASR(side, 'V', direct, m, n, onDevice.data(), onDevice.data() + cs.ld,
                           a.data(), a.ld());
                const auto x = rotated(side, direct, before, cs);
                SCOPED_TRACE((std::string{side, direct}));
                test::expectElements(
                    a.download(),
                    [&](int i, int j) {
                        const auto z = x[std::size_t(j) * m + i];
                        return test::scalar<T>(z.real(), z.imag());
                    },
                    20);
            }
}

// The identity is not multiplied by, within a group of rotations and beyond.
TYPED_TEST(Rotations, TheIdentityKeepsInfinities) {
    using T = TypeParam;
    auto a = Matrix<T>::random(5, 20, 6);
    for (int j = 0; j < 20; ++j) a(2, j) = test::scalar<T>(std::numeric_limits<double>::infinity());
    Matrix<RealOf<T>> cs(19, 2);
    for (int k = 0; k < 19; ++k) {
        cs(k, 0) = 1;
        cs(k, 1) = 0;
    }
    OnDevice<RealOf<T>> onDevice(cs);
    for (char direct : {'f', 'b'}) {
        OnDevice<T> x(a);
        lumo::LASR('r', 'v', direct, 5, 20, onDevice.data(), onDevice.data() + cs.ld, x.data(),
                   x.ld());
        EXPECT_EQ(a, x.download());
    }
}

class RotationLaunches : public test::OnSoftwareDevice {};

TEST_F(RotationLaunches, OneKernelForPivotVAndNoneForTheOthers) {
    OnDevice<float> a(Matrix<float>::random(9, 9)), cs(Matrix<float>::random(9, 2));
    auto launched = [&](char side, char pivot, char direct, int m, int n) {
        return launchedBy(
            [&] { lumo::LASR(side, pivot, direct, m, n, cs.data(), cs.data(), a.data(), 9); });
    };
    const std::string left = "LASR_k<cudalib::StaticMap1D<128u>, (char)76, (char)86, ";
    const std::string right = "LASR_k<cudalib::StaticMap1D<64u>, (char)82, (char)86, ";
    EXPECT_EQ(Names{left + "(char)70, float>"}, launched('l', 'v', 'f', 9, 9));
    EXPECT_EQ(Names{left + "(char)66, float>"}, launched('L', 'V', 'B', 9, 9));
    EXPECT_EQ(Names{right + "(char)70, float>"}, launched('R', 'V', 'F', 9, 9));
    EXPECT_EQ(Names{right + "(char)66, float>"}, launched('r', 'v', 'b', 9, 9));
    EXPECT_EQ(1u, launched('L', 'V', 'F', 1, 9).size());
    for (char pivot : {'T', 'b'}) EXPECT_EQ(Names{}, launched('R', pivot, 'F', 9, 9));
    EXPECT_EQ(Names{}, launched('R', 'V', 'F', 9, 0));
    EXPECT_EQ(Names{}, launched('L', 'V', 'F', 1, -3));  // no check sees this one
}

TEST_F(RotationLaunches, ChecksInOrder) {
    float x = 0, *null = nullptr;
    auto info = [&](const char* letters, int m, int n, float* c, float* s, float* a, int lda) {
        return test::argumentError(
            [&] { lumo::LASR(letters[0], letters[1], letters[2], m, n, c, s, a, lda); });
    };
    EXPECT_EQ(-1, info("XXX", -1, -1, null, null, null, 0));
    EXPECT_EQ(-2, info("LXX", -1, -1, null, null, null, 0));
    EXPECT_EQ(-3, info("LTX", -1, -1, null, null, null, 0));
    EXPECT_EQ(-4, info("LTF", -1, -1, null, null, null, 0));
    EXPECT_EQ(-5, info("LTF", 2, -1, null, null, null, 0));
    EXPECT_EQ(-6, info("LTF", 2, 2, null, null, null, 0));
    EXPECT_EQ(-7, info("LTF", 2, 2, &x, null, null, 0));
    EXPECT_EQ(-8, info("LTF", 2, 2, &x, &x, null, 0));
    EXPECT_EQ(-9, info("LTF", 2, 2, &x, &x, &x, 1));
    EXPECT_EQ(0, info("LVF", 0, 2, null, null, null, 0));
    EXPECT_EQ(0, info("RVF", 2, 0, null, null, null, 0));
}

}  // namespace
