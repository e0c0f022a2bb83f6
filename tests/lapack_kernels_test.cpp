// Reflectors and plane rotations, generated and applied, beside the CPU LAPACK; interchanges.
#include <climits>
#include <numeric>
#include <utility>

#include "basic/ApplySweeps/ApplySweeps.h"
#include "basic/LASWP/LASWP.h"
#include "basic/PermuteRows/PermuteRows.h"
#include "basic/lar2v/lar2v.h"
#include "basic/larfg/larfg.h"
#include "basic/largv/largv.h"
#include "basic/lartv/lartv.h"
#include "basic/lasr/lasr.h"
#include "basic/magnitude.h"
#include "brd/both_products/both_products.h"
#include "brd/next_column/next_column.h"
#include "platform/cpu/blas.h"
#include "platform/cpu/lapack.h"
#include "support/kernels.h"

namespace test {
namespace {

// Relative to each element, down to the smallest numbers.
template <class T>
const double smallest = double(std::numeric_limits<RealOf<T>>::denorm_min()) /
                        std::numeric_limits<RealOf<T>>::epsilon();

template <class T>
class LapackKernels : public OnMachine {};
TYPED_TEST_SUITE(LapackKernels, ElementTypes);

// --- Reflectors -------------------------------------------------------------------------------

// Of (alpha, x) random, each times a factor.
template <class T>
void expectReflector(int n, int incx, double alphaFactor, double xFactor) {
    SCOPED_TRACE(testing::Message() << n << " elements, alpha " << alphaFactor << ", x " << xFactor
                                    << ", increment " << incx);
    auto random = vectorOf<T>(std::max(1, n - 1), incx), scalars = vectorOf<T>(2, 1, 5);
    for (int i = 0; i < random.n; ++i) random(0, i) = RealOf<T>(xFactor) * random(0, i);
    scalars(0, 0) = RealOf<T>(alphaFactor) * scalars(0, 0);
    Twins<T> x(random), alphaAndTau(scalars);
    lumo::larfg(n, alphaAndTau.gpu(), x.gpu(), incx, alphaAndTau.gpu() + 1);
    cpu::larfg<Plain<T>>(n, alphaAndTau.cpu(), x.cpu(), incx, alphaAndTau.cpu() + 1);
    const double ulps = 8 + 2 * std::sqrt(n);
    alphaAndTau.expectSame(ulps, smallest<T>);
    x.expectSame(ulps, smallest<T>);
}

TYPED_TEST(LapackKernels, Reflectors) {
    using Limits = std::numeric_limits<RealOf<TypeParam>>;
    const double small = 100 * Limits::denorm_min(), tiny = 4 * Limits::min(),
                 huge = Limits::max() / 128;
    const std::pair<double, double> unlike[] = {{1, 0},     {0, 1},        {0, 0},
                                                {1, small}, {small, 1},    {huge, 1},
                                                {1, huge},  {tiny, small}, {0, small}};
    for (int n : {1, 2, 33, 34, 1000})
        for (int incx : {1, 3}) {
            for (double factor : {1.0, -1.0, small, tiny, std::sqrt(tiny), huge})
                expectReflector<TypeParam>(n, incx, factor, factor);
            for (auto [alpha, x] : unlike) expectReflector<TypeParam>(n, incx, alpha, x);
        }
}

TYPED_TEST(LapackKernels, ReflectorsKeepNotANumberAndInfinity) {
    using T = TypeParam;
    for (double odd : {std::nan(""), HUGE_VAL}) {
        auto x = vectorOf<T>(40, 1);
        x(0, 37) = scalar<T>(odd);
        OnDevice<T> both(vectorOf<T>(2, 1)), deviceX(x);
        lumo::larfg(41, both.data(), deviceX.data(), 1, both.data() + 1);
        EXPECT_FALSE(std::isfinite(std::abs(wide(both.download()(0, 0)))));
    }
}

// --- Products of the bidiagonal reduction ------------------------------------------------------

// Small whole numbers, in both places: sums of their products are exact, in any order. The first
// ones are zero, so many as `zeros` says.
template <class T>
Twins<T> wholeNumbers(int m, int n, unsigned seed, int zeros = 0) {
    auto a = Matrix<T>::random(m, n, m + 2, seed);
    for (T& x : a.data)
        if (!(x == Matrix<T>::mark()))
            x = scalar<T>(std::round(3 * wide(x).real()), std::round(3 * wide(x).imag()));
    std::fill_n(a.data.begin(), zeros, T(0));
    return a;
}

// Sizes around groups of columns, the lanes of a block, and the most parts.
TYPED_TEST(LapackKernels, BothProductsInOnePass) {
    using T = TypeParam;
    for (auto [m, n, count] :
         {std::array{1, 1, 0}, {31, 8, 1}, {257, 9, 65}, {600, 70, 6}, {20, 2100, 3}}) {
        const int lead = m / 3 % 8;
        SCOPED_TRACE(testing::Message() << m << " x " << n << ", " << count);
        auto a = wholeNumbers<T>(m, n, 1), w = wholeNumbers<T>(n, count + 1, 2),
             v = wholeNumbers<T>(m, 1, 3, lead), t = wholeNumbers<T>(count + 1, 2, 4),
             r = wholeNumbers<T>(n, 1, 5), tau = wholeNumbers<T>(1, 1, 8);
        const OnDevice<T> sums(poisoned<T>(m, lumo::mostParts<T>(n), m + 1));
        const int parts = lumo::bothProducts(m, lead, n, count, a.gpu(), a.host.ld, w.gpu(),
                                             w.host.ld, v.gpu(), t.gpu(), t.gpu() + t.host.ld,
                                             tau.gpu(), r.gpu(), sums.data(), sums.ld());
        auto product = filled(m, 1, T(0)), made = product;
        for (int j = 0; j < n; ++j) {
            T y = T(0), head = lumo::conjugate(a.host(lead, j));
            for (int i = 0; i < m; ++i) y = y + lumo::conjugate(a.host(i, j)) * v.host(i, 0);
            for (int k = 0; k < count; ++k) {
                y = y + w.host(j, k) * t.host(k, 0);
                head = head + w.host(j, k) * t.host(k, 1);
            }
            w.host(j, count) = tau.host(0, 0) * y;
            r.host(j, 0) = head - w.host(j, count);
            for (int i = 0; i < m; ++i) product(i, 0) = product(i, 0) + a.host(i, j) * r.host(j, 0);
        }
        for (auto* result : {&w, &r}) result->expectSame(0);
        const auto part = sums.download();
        for (int k = 0; k < parts; ++k)
            for (int i = 0; i < m; ++i) made(i, 0) = made(i, 0) + part(i, k);
        EXPECT_EQ(product, made);
        EXPECT_TRUE(part.paddingUntouched());
    }
}

// By the sums of A r over e; by A itself where e is too small or a sum has overflowed.
TYPED_TEST(LapackKernels, NextColumns) {
    using T = TypeParam;
    const double tiny = std::numeric_limits<RealOf<T>>::min();
    for (auto [m, n, count, parts, e, overflow] : {std::tuple{1, 1, 1, 1, 4.0, false},
                                                   {300, 9, 5, 40, 4.0, false},
                                                   {32, 70, 67, 3, tiny, false},
                                                   {300, 9, 5, 3, tiny, false},
                                                   {31, 9, 5, 3, 4.0, true}}) {
        SCOPED_TRACE(testing::Message() << m << " x " << n << ", " << count << ", " << e);
        auto a = wholeNumbers<T>(m, n, 1), p = wholeNumbers<T>(m, count + 1, 2),
             w = wholeNumbers<T>(n, count + 1, 3), heads = wholeNumbers<T>(count, 1, 4),
             tau = wholeNumbers<T>(1, 1, 8);
        auto sums = wholeNumbers<T>(m, parts, 5).host;
        if (overflow) sums(m - 1, 0) = scalar<T>(HUGE_VAL);
        const OnDevice<T> onSums(sums);
        const OnDevice<RealOf<T>> onE(filled(1, 1, RealOf<T>(e)));
        lumo::nextColumn(m, n, count, a.gpu(), a.host.ld, w.gpu(), w.host.ld, p.gpu(), p.host.ld,
                         heads.gpu(), onSums.data(), sums.ld, parts, onE.data(), tau.gpu(), true);
        for (int i = 0; i < m; ++i) {
            T column = T(0), sum = T(0), product = T(0);
            for (int k = 0; k < parts; ++k) sum = sum + sums(i, k);
            for (int k = 0; k < count; ++k) sum = sum - p.host(i, k) * heads.host(k, 0);
            for (int j = n - 1; j >= 0; --j) {
                column = a.host(i, j);
                for (int k = 0; k < count; ++k)
                    column = column - p.host(i, k) * lumo::conjugate(w.host(j, k));
                product = product + column * (T(j == 0) - tau.host(0, 0) * w.host(j, count));
            }
            a.host(i, 0) = e == 4 && !overflow ? RealOf<T>(0.25) * sum : product;
            p.host(i, count) = column - a.host(i, 0);
        }
        for (auto* result : {&a, &p}) result->expectSame(0);
    }
}

// --- Rotations of matrices ---------------------------------------------------------------------

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

// Sizes around a group of rotations, a block of the GPU and a strip of the CPU.
TYPED_TEST(LapackKernels, RotationsOfMatrices) {
    using T = TypeParam;
    for (auto [lines, along] :
         {std::pair{1, 2}, {3, 1}, {63, 8}, {64, 9}, {129, 10}, {1000, 33}, {4099, 18}})
        for (const char* letters : {"LF", "lB", "RF", "Rb"}) {
            SCOPED_TRACE(letters);
            const bool left = *letters != 'R';
            const int m = left ? along : lines, n = left ? lines : along;
            Twins<T> a(Matrix<T>::random(m, n, m + 3));
            Twins<RealOf<T>> cs(rotations<RealOf<T>>(along - 1));
            const int ld = a.host.ld, sines = cs.host.ld;
            lumo::LASR(letters[0], 'V', letters[1], m, n, cs.gpu(), cs.gpu() + sines, a.gpu(), ld);
            cpu::lasr<Plain<T>>(letters[0], 'V', letters[1], m, n, cs.cpu(), cs.cpu() + sines,
                                a.cpu(), ld);
            a.expectSame(20);
        }
}

// A table of identities, as numbers for the device.
template <class Real>
Matrix<Real> sweepTable(int n, int stages) {
    Matrix<Real> numbers(2 * 35, lumo::sweepTableRows(n, stages));
    for (std::size_t k = 0; k < numbers.data.size(); ++k) numbers.data[k] = Real(k % 2 == 0);
    return numbers;
}
template <class T>
void applyTable(const Matrix<RealOf<T>>& table, T* a, std::ptrdiff_t ld, Shape s, int stages,
                bool forward) {
    const OnDevice<RealOf<T>> numbers(table);
    const auto* rotations = reinterpret_cast<const lumo::Rotation<RealOf<T>>*>(numbers.data());
    if (!forward) a += (s.n - 1) * ld;
    lumo::applySweeps(s.m, s.n, stages, rotations, table.m / 2, a, forward ? ld : -ld);
}

// The identity is not multiplied by, within a group of rotations and beyond.
TYPED_TEST(LapackKernels, TheIdentityKeepsInfinities) {
    using T = TypeParam;
    auto a = Matrix<T>::random(5, 20, 6);
    for (int j = 0; j < 20; ++j) a(2, j) = scalar<T>(std::numeric_limits<double>::infinity());
    const OnDevice ones(filled<RealOf<T>>(19, 1, 1)), zeros(filled<RealOf<T>>(19, 1, 0));
    for (char direct : {'f', 'b'}) {
        const OnDevice x(a);
        lumo::LASR('r', 'v', direct, 5, 20, ones.data(), zeros.data(), x.data(), x.ld());
        applyTable(sweepTable<RealOf<T>>(20, 2), x.data(), x.ld(), {5, 20}, 2, direct == 'f');
        expectElements(x, x);
    }
}

// Sweeps of different planes, not all turned; sizes around blocks and a group of elements.
TYPED_TEST(LapackKernels, SweepsOfRotations) {
    using T = TypeParam;
    for (auto [m, n, stages] :
         {std::array{1, 2, 1}, {15, 7, 8}, {16, 8, 2}, {17, 9, 8}, {64, 41, 3}, {300, 33, 8}})
        for (bool forward : {true, false}) {
            Twins<T> a(Matrix<T>::random(m, n, m + 3));
            auto table = sweepTable<RealOf<T>>(n, stages);
            for (int j = 0; j < stages * lumo::sweepsOfStage; ++j)
                for (int p = j % 3; p < n - 1 - j % 5; p += 1 + (p % 11 == 5)) {
                    auto& c = table(2 * j, p + 1 + j) = RealOf<T>(std::cos(3 * j + p));
                    auto& s = table(2 * j + 1, p + 1 + j) = RealOf<T>(std::sin(3 * j + p));
                    Plain<T>* const x = a.cpu() + (forward ? p : n - 1 - p) * a.host.ld;
                    cpu::rot<Plain<T>>(m, x, 1, x + (forward ? 1 : -1) * a.host.ld, 1, c, s);
                }
            applyTable(table, a.gpu(), a.host.ld, {m, n}, stages, forward);
            a.expectSame(20);
        }
}

// --- Rotations of vectors ----------------------------------------------------------------------

constexpr int n = 300, incx = 2, incy = 3, incc = 2;

TYPED_TEST(LapackKernels, RotationsFromBothSides) {
    using T = TypeParam;
    Twins<T> x(vectorOf<T>(n, incx, 1)), y(vectorOf<T>(n, incx, 2)), z(vectorOf<T>(n, incx, 6)),
        s(vectorOf<T>(n, incc, 3));
    Twins<RealOf<T>> c(vectorOf<RealOf<T>>(n, incc, 4));
    lumo::lar2v(n, x.gpu(), y.gpu(), z.gpu(), incx, c.gpu(), s.gpu(), incc);
    cpu::lar2v<Plain<T>>(n, x.cpu(), y.cpu(), z.cpu(), incx, c.cpu(), s.cpu(), incc);
    // Sums of terms of either sign: rounding is relative to the terms, which are below 8.
    for (auto* result : {&x, &y, &z}) result->expectSame(16);
}

TYPED_TEST(LapackKernels, RotationsOfPairs) {
    using T = TypeParam;
    Twins<T> x(vectorOf<T>(n, incx, 1)), y(vectorOf<T>(n, incy, 2)), s(vectorOf<T>(n, incc, 3));
    Twins<RealOf<T>> c(vectorOf<RealOf<T>>(n, incc, 4));
    lumo::lartv(n, x.gpu(), incx, y.gpu(), incy, c.gpu(), s.gpu(), incc);
    cpu::lartv<Plain<T>>(n, x.cpu(), incx, y.cpu(), incy, c.cpu(), s.cpu(), incc);
    for (auto* result : {&x, &y}) result->expectSame(8);
}

// Each of zero, small, ordinary and large against each.
TYPED_TEST(LapackKernels, GeneratedRotations) {
    using T = TypeParam;
    using R = RealOf<T>;
    using Limits = std::numeric_limits<R>;
    const R factors[] = {0,    Limits::min() * 8,        std::sqrt(Limits::min()), R(1e-3), 1,
                         1000, std::sqrt(Limits::max()), Limits::max() / 8};
    auto first = vectorOf<T>(n, incx, 1), second = vectorOf<T>(n, incy, 2);
    for (int i = 0; i < n; ++i) {
        first(0, i) = factors[i % 8] * first(0, i);
        second(0, i) = factors[i / 8 % 8] * second(0, i);
    }
    Twins<T> x(first), y(second);
    Twins<R> c(vectorOf<R>(n, incc, 4));
    lumo::largv(n, x.gpu(), incx, y.gpu(), incy, c.gpu(), incc);
    cpu::largv<Plain<T>>(n, x.cpu(), incx, y.cpu(), incy, c.cpu(), incc);
    for (auto* result : {&x, &y}) result->expectSame(8, smallest<T>);
    c.expectSame(8, smallest<T>);
}

// --- Interchanges --------------------------------------------------------------------------------

// Pivots as LU chooses them: row r (from 1) is exchanged with one at or below it.
std::vector<int> pivots(int count, int rows) {
    std::mt19937 engine(7);
    std::vector<int> p(count);
    for (int r = 0; r < count; ++r) p[r] = std::uniform_int_distribution<int>(r + 1, rows)(engine);
    return p;
}

// Rows k1 ... k2 of lines x across elements, or columns of across x lines, by a plain loop.
template <class T>
void interchange(bool columns, int lines, int across, int k1, int k2, const std::vector<int>& p) {
    SCOPED_TRACE(testing::Message() << (columns ? "columns " : "rows ") << k1 << " to " << k2
                                    << " of " << lines << ", across " << across);
    const int m = columns ? across : lines, n = columns ? lines : across;
    auto expected = Matrix<T>::random(m, n, m + 3);
    const OnDevice<T> a(expected), moved(expected);
    (columns ? lumo::LASWPCOL<T> : lumo::LASWP<T>)(across, a.data(), a.ld(), k1, k2, p.data(), 1);
    for (int k = k1 - 1; k < k2; ++k)
        for (int i = 0; i < across; ++i)
            columns ? std::swap(expected(i, k), expected(i, p[k] - 1))
                    : std::swap(expected(k, i), expected(p[k] - 1, i));
    EXPECT_TRUE(k1 == k2 || expected == a.download());
    if (columns) return;
    if (k1 == 1 && k2 == m)
        lumo::RowPermutation<T>(m, n).apply(p.data(), moved.data(), moved.ld());
    else
        lumo::permuteRows(n, moved.data(), moved.ld(), k1, k2, p.data());
    EXPECT_EQ(expected, moved.download());
}

TYPED_TEST(LapackKernels, Interchanges) {
    for (bool columns : {false, true})
        for (auto [k1, k2] :
             {std::pair{1, 2}, {1, 16}, {1, 17}, {3, 40}, {7, 7}, {2, 130}, {1, 200}})
            for (int across : {1, 15, 1025})
                if (k1 < k2 || !columns)
                    interchange<TypeParam>(columns, 200, across, k1, k2, pivots(k2, 200));
}

TYPED_TEST(LapackKernels, InterchangesBeyondSixteenBitsOfRows) {
    std::vector<int> p(36);
    std::iota(p.begin(), p.end(), 2);
    p[3] = 65537;  // the largest of a launch each
    p[20] = 65536;
    p[33] = 70000;
    for (bool columns : {false, true}) interchange<TypeParam>(columns, 70000, 2, 1, 36, p);
}

}  // namespace
}  // namespace test
