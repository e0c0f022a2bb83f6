// Plane rotations, on matrices, on vectors, and generated: compared with the CPU LAPACK.
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
    void s##lasr_(const char* side, const char* pivot, const char* direct, const int* m,        \
                  const int* n, const R* c, const R* sines, T* a, const int* lda, std::size_t,  \
                  std::size_t, std::size_t);                                                    \
    void s##lar2v_(const int* n, T* x, T* y, T* z, const int* incx, const R* c, const T* sines, \
                   const int* incc);                                                            \
    void s##largv_(const int* n, T* x, const int* incx, T* y, const int* incy, R* c,            \
                   const int* incc);                                                            \
    void s##lartv_(const int* n, T* x, const int* incx, T* y, const int* incy, const R* c,      \
                   const T* sines, const int* incc);                                            \
    }                                                                                           \
    template <>                                                                                 \
    struct CpuRotations<T> {                                                                    \
        static constexpr auto lasr = s##lasr_, lar2v = s##lar2v_, largv = s##largv_,            \
                              lartv = s##lartv_;                                                \
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

template <class T>
class Rotations : public OnMachine {};
TYPED_TEST_SUITE(Rotations, ElementTypes);

// Sizes around a group of rotations, a block of the GPU and a strip of the CPU.
TYPED_TEST(Rotations, OfMatrices) {
    using T = TypeParam;
    for (auto [lines, along] :
         {std::pair{1, 2}, {3, 1}, {63, 8}, {64, 9}, {129, 10}, {1000, 33}, {4099, 18}})
        for (const char* letters : {"LF", "lB", "RF", "Rb"}) {
            SCOPED_TRACE(letters);
            const bool left = *letters != 'R';
            const int m = left ? along : lines, n = left ? lines : along;
            auto expected = Matrix<T>::random(m, n, m + 3);
            const auto cs = rotations<RealOf<T>>(along - 1);
            const OnDevice a(expected);
            const OnDevice c(cs);
            lumo::LASR(letters[0], 'V', letters[1], m, n, c.data(), c.data() + c.ld(), a.data(),
                       a.ld());
            CpuRotations<T>::lasr(letters, "V", letters + 1, &m, &n, &cs(0, 0),
                                  cs.data.data() + cs.ld, expected.data.data(), &expected.ld, 1, 1,
                                  1);
            expectElements(a, expected, 20);
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

// --- On vectors ----------------------------------------------------------------------------------

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

}  // namespace
}  // namespace test
