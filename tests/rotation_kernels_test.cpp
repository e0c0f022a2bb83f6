// Plane rotations: on matrices, on vectors, and generated.
#include "basic/lar2v/lar2v.h"
#include "basic/largv/largv.h"
#include "basic/lartv/lartv.h"
#include "basic/lasr/lasr.h"
#include "residuals.h"
#include "support/kernels.h"

template <class T>
struct CpuRotations;
#define LUMO_TEST_ROTATIONS(s, T, R)                                                            \
    extern "C" {                                                                                \
    void s##lar2v_(const int* n, T* x, T* y, T* z, const int* incx, const R* c, const T* sines, \
                   const int* incc);                                                            \
    void s##largv_(const int* n, T* x, const int* incx, T* y, const int* incy, R* c,            \
                   const int* incc);                                                            \
    void s##lartv_(const int* n, T* x, const int* incx, T* y, const int* incy, const R* c,      \
                   const T* sines, const int* incc);                                            \
    }                                                                                           \
    template <>                                                                                 \
    struct CpuRotations<T> {                                                                    \
        static constexpr auto lar2v = s##lar2v_, largv = s##largv_, lartv = s##lartv_;          \
    };
LUMO_TEST_ROTATIONS(s, float, float)
LUMO_TEST_ROTATIONS(d, double, double)
LUMO_TEST_ROTATIONS(c, lumo::Complex<float>, float)
LUMO_TEST_ROTATIONS(z, lumo::Complex<double>, double)

namespace test {
namespace {

// --- On matrices -------------------------------------------------------------------------------

// Cosines and sines, column by column; every seventh rotation is the identity.
template <class Real>
Matrix<Real> rotations(int planes) {
    Matrix<Real> cs(std::max(1, planes), 2);
    Random random(3);
    for (int k = 0; k < planes; ++k) {
        const double angle = k % 7 == 5 ? 0 : 3 * random.next<double>();
        cs(k, 0) = Real(std::cos(angle));
        cs(k, 1) = Real(std::sin(angle));
    }
    return cs;
}

// LAPACK's loop, in double precision.
template <class Real>
WideMatrix rotated(char side, char direct, WideMatrix a, const Matrix<Real>& cs) {
    const bool left = side == 'L';
    const int planes = (left ? a.m : a.n) - 1, lines = left ? a.n : a.m;
    for (int r = 0; r < planes; ++r) {
        const int k = direct == 'F' ? r : planes - 1 - r;
        const double c = cs(k, 0), s = cs(k, 1);
        for (int i = 0; i < lines; ++i) {
            Wide &one = left ? a(k, i) : a(i, k), &two = left ? a(k + 1, i) : a(i, k + 1);
            const Wide old = two;
            two = c * old - s * one;
            one = s * old + c * one;
        }
    }
    return a;
}

template <class T>
class Rotations : public OnMachine {};
TYPED_TEST_SUITE(Rotations, ElementTypes);

// Sizes around a group of rotations, a block of the GPU and a strip of the CPU.
TYPED_TEST(Rotations, EqualAPlainLoop) {
    using T = TypeParam;
    for (auto [lines, along] :
         {std::pair{1, 2}, {3, 1}, {63, 8}, {64, 9}, {129, 10}, {1000, 33}, {4099, 18}})
        for (const char* letters : {"LF", "LB", "RF", "RB"}) {
            SCOPED_TRACE(letters);
            const char side = letters[0], direct = letters[1];
            const int m = side == 'L' ? along : lines, n = side == 'L' ? lines : along;
            const auto before = Matrix<T>::random(m, n, m + 3);
            const auto cs = rotations<RealOf<T>>(along - 1);
            const OnDevice a(before);
            const OnDevice c(cs);
            lumo::LASR(side, 'V', direct, m, n, c.data(), c.data() + c.ld(), a.data(), a.ld());
            const WideMatrix x = rotated(side, direct, WideMatrix(before), cs);
            auto wanted = [&x](int i, int j) { return scalar<T>(x(i, j).real(), x(i, j).imag()); };
            expectElements(a, wanted, 20);
        }
}

// The identity is not multiplied by, within a group of rotations and beyond.
TYPED_TEST(Rotations, TheIdentityKeepsInfinities) {
    using T = TypeParam;
    auto a = Matrix<T>::random(5, 20, 6);
    for (int j = 0; j < 20; ++j) a(2, j) = scalar<T>(std::numeric_limits<double>::infinity());
    const OnDevice ones(filled<RealOf<T>>(19, 1, 1)), zeros(filled<RealOf<T>>(19, 1, 0));
    for (char direct : {'f', 'b'}) {
        const OnDevice x(a);
        lumo::LASR('r', 'v', direct, 5, 20, ones.data(), zeros.data(), x.data(), x.ld());
        expectElements(x, x);
    }
}

class RotationLaunches : public OnSoftwareDevice {};

TEST_F(RotationLaunches, OneKernelForPivotVAndNoneForTheOthers) {
    const OnDevice<float> a(9, 9, 0), cs(9, 2, 0);
    auto launched = [&](const char* letters, int m, int n) {
        return launchedBy([&] {
            lumo::LASR(letters[0], letters[1], letters[2], m, n, cs.data(), cs.data(), a.data(), 9);
        });
    };
    const std::string left = "LASR_k<cudalib::StaticMap1D<128u>, (char)76, (char)86, ";
    const std::string right = "LASR_k<cudalib::StaticMap1D<64u>, (char)82, (char)86, ";
    EXPECT_EQ(Names{left + "(char)70, float>"}, launched("lvf", 9, 9));
    EXPECT_EQ(Names{left + "(char)66, float>"}, launched("LVB", 9, 9));
    EXPECT_EQ(Names{right + "(char)70, float>"}, launched("RVF", 9, 9));
    EXPECT_EQ(Names{right + "(char)66, float>"}, launched("rvb", 9, 9));
    EXPECT_EQ(1u, launched("LVF", 1, 9).size());
    EXPECT_EQ(Names{}, launched("RTF", 9, 9));
    EXPECT_EQ(Names{}, launched("RbF", 9, 9));
    EXPECT_EQ(Names{}, launched("RVF", 9, 0));
    EXPECT_EQ(Names{}, launched("LVF", 1, -3));  // no check sees this one
}

// --- On vectors, compared with the CPU LAPACK ----------------------------------------------------

template <class T>
class RotationVectors : public OnMachine {
  protected:
    using R = RealOf<T>;
    using Cpu = CpuRotations<T>;
    using Limits = std::numeric_limits<R>;
    static constexpr int n = 300, incx = 2, incy = 3, incc = 2;

    void onBothSides() {
        auto z = vectorOf<T>(n, incx, 6);
        y = vectorOf<T>(n, incx, 2);
        const OnDevice dx(x), dy(y), dz(z), ds(s);
        const OnDevice dc(c);
        lumo::lar2v(n, dx.data(), dy.data(), dz.data(), incx, dc.data(), ds.data(), incc);
        Cpu::lar2v(&n, x.data.data(), y.data.data(), z.data.data(), &incx, c.data.data(),
                   s.data.data(), &incc);
        // Sums of terms of either sign: rounding is relative to the terms, which are below 8.
        expectElements(dx, x, 16);
        expectElements(dy, y, 16);
        expectElements(dz, z, 16);
    }
    void ofPairs() {
        const OnDevice dx(x), dy(y), ds(s);
        const OnDevice dc(c);
        lumo::lartv(n, dx.data(), incx, dy.data(), incy, dc.data(), ds.data(), incc);
        Cpu::lartv(&n, x.data.data(), &incx, y.data.data(), &incy, c.data.data(), s.data.data(),
                   &incc);
        expectElements(dx, x, 8);
        expectElements(dy, y, 8);
    }
    void generated() {
        // Each of zero, small, ordinary and large against each.
        const R factors[] = {0,    Limits::min() * 8,        std::sqrt(Limits::min()), R(1e-3), 1,
                             1000, std::sqrt(Limits::max()), Limits::max() / 8};
        for (int i = 0; i < n; ++i) {
            x(0, i) = factors[i % 8] * x(0, i);
            y(0, i) = factors[i / 8 % 8] * y(0, i);
        }
        const OnDevice dx(x), dy(y);
        const OnDevice dc(c);
        lumo::largv(n, dx.data(), incx, dy.data(), incy, dc.data(), incc);
        Cpu::largv(&n, x.data.data(), &incx, y.data.data(), &incy, c.data.data(), &incc);
        // Relative to the element, down to the smallest.
        const double smallest = double(Limits::denorm_min()) / Limits::epsilon();
        expectElements(dx, x, 8, smallest);
        expectElements(dy, y, 8, smallest);
        expectElements(dc, c, 8, smallest);
    }

  private:
    Matrix<T> x = vectorOf<T>(n, incx, 1), y = vectorOf<T>(n, incy, 2), s = vectorOf<T>(n, incc, 3);
    Matrix<R> c = vectorOf<R>(n, incc, 4);
};
TYPED_TEST_SUITE(RotationVectors, ElementTypes);

TYPED_TEST(RotationVectors, OnBothSides) {
    this->onBothSides();
}
TYPED_TEST(RotationVectors, OfPairs) {
    this->ofPairs();
}
TYPED_TEST(RotationVectors, Generated) {
    this->generated();
}

TEST_F(RotationLaunches, ChecksInOrder) {
    using T = lumo::Complex<float>;
    const OnDevice<T> device(vectorOf<T>(8, 1));
    T *p = device.data(), *null = nullptr;
    float *r = reinterpret_cast<float*>(p), *noReal = nullptr;
    expectChecks(&lumo::lar2v<T>, {1, 2, 3, 4, 5, 6, 7, 8},
                 {-1, null, null, null, 0, noReal, null, 0}, {1, p, p, p, 1, r, p, 1});
    expectChecks(&lumo::lartv<T>, {1, 2, 3, 4, 5, 6, 7, 8}, {-1, null, 0, null, 0, noReal, null, 0},
                 {1, p, 1, p, 1, r, p, 1});
    expectChecks(&lumo::largv<T>, {1, 2, 3, 4, 5, 6, 7}, {-1, null, 0, null, 0, noReal, 0},
                 {1, p, 1, p, 1, r, 1});
    expectChecks(&lumo::LASR<float>, {1, 2, 3, 4, 5, 6, 7, 8, 9},
                 {'X', 'X', 'X', -1, -1, noReal, noReal, noReal, 1},
                 {'L', 'T', 'F', 2, 2, r, r, r, 2});
    EXPECT_EQ(Names{}, launchedBy([&] {
                  lumo::lar2v(0, null, null, null, 0, noReal, null, 0);
                  lumo::lartv(0, null, 0, null, 0, noReal, null, 0);
                  lumo::largv(0, null, 0, null, 0, noReal, 0);
                  lumo::LASR('L', 'V', 'F', 0, 2, noReal, noReal, noReal, 0);
                  lumo::LASR('R', 'V', 'F', 2, 0, noReal, noReal, noReal, 0);
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

}  // namespace
}  // namespace test
