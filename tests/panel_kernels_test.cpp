// Panels of LU and QR that the device factorises.
#include <climits>
#include <numeric>
#include <utility>

#include "basic/LuPanel/LuPanel.h"
#include "basic/PermuteRows/PermuteRows.h"
#include "basic/QrPanel/QrPanel.h"
#include "basic/magnitude.h"
#include "platform/cpu/qr_panel.h"
#include "platform/reciprocal.h"
#include "residuals.h"
#include "support/kernels.h"

namespace test {
namespace {

// --- Panels of LU --------------------------------------------------------------------------------

// LAPACK's xGETF2: pivots from 1, and its info.
template <class T>
int getf2(Matrix<T>& a, std::vector<int>& pivots) {
    auto re = [](T x) { return std::abs(lumo::realPart(x)); };
    auto im = [](T x) { return std::abs(lumo::imaginaryPart(x)); };
    int info = 0;
    for (int j = 0; j < a.n; ++j) {
        int p = j;
        for (int i = j + 1; i < a.m; ++i)
            if (re(a(i, j)) + im(a(i, j)) > re(a(p, j)) + im(a(p, j))) p = i;
        pivots.push_back(p + 1);
        for (int k = 0; k < a.n; ++k) std::swap(a(j, k), a(p, k));
        const T pivot = a(j, j);
        const bool divides = platform::reciprocalOverflows(re(pivot), im(pivot));
        if (pivot == T(0) && info == 0) info = j + 1;
        for (int i = j + 1; i < a.m; ++i) {
            if (!(pivot == T(0))) a(i, j) = divides ? a(i, j) / pivot : a(i, j) * (T(1) / pivot);
            for (int k = j + 1; k < a.n; ++k) a(i, k) = a(i, k) - a(i, j) * a(j, k);
        }
    }
    return info;
}

template <class T>
class LuPanels : public OnMachine {
  protected:
    void SetUp() override { this->start(machine(70)); }

    // What a factorised panel tells: its pivots and info, and what rows beside it have to do.
    struct Exchanges {
        const OnDevice<int> ints;
        const OnDevice<unsigned> moves;

        explicit Exchanges(int n)
            : ints(filled(n + 1, 1, INT_MAX)),
              moves(filled(int(sizeof(lumo::RowMoves) / sizeof(unsigned)), 1, 0u)) {}
        lumo::RowMoves* table() const { return reinterpret_cast<lumo::RowMoves*>(moves.data()); }
        void factorize(int m, int n, T* a, int lda, int first) const {
            lumo::LuPanel<T>(m).factorize(m, n, a, lda, first, ints.data(), table(),
                                          ints.data() + n);
        }
    };

    // Factorises the panel below row `first` of a matrix, and moves rows beside it likewise.
    // Pivots and info are as xGETF2 has them; what is left of both factors is returned.
    static std::pair<Matrix<T>, Matrix<T>> factors(const Matrix<T>& panel, int first,
                                                   std::vector<int>& pivots) {
        const int m = panel.m, n = panel.n;
        SCOPED_TRACE(testing::Message() << m << " x " << n << " from row " << first);
        auto expected = panel, beside = Matrix<T>::random(m, 5, m + 1, 9);
        const OnDevice<T> a(panel), b(beside);
        const Exchanges exchanges(n);
        exchanges.factorize(m, n, a.data(), a.ld(), first);
        lumo::permuteRowsThere(5, b.data(), b.ld(), exchanges.table());
        const int info = getf2(expected, pivots);
        const Matrix<int> found = exchanges.ints.download();
        for (int j = 0; j < n; ++j) {
            EXPECT_EQ(first + pivots[j], found(j, 0)) << j;
            for (int k = 0; k < 5; ++k) std::swap(beside(j, k), beside(pivots[j] - 1, k));
        }
        EXPECT_EQ(info ? first + info : INT_MAX, found(n, 0));
        EXPECT_EQ(beside, b.download());
        const Matrix<T> result = a.download();
        EXPECT_TRUE(result.paddingUntouched());
        return {result, expected};
    }
};
TYPED_TEST_SUITE(LuPanels, ElementTypes);

// Around a block's rows, with one block and several, a panel's columns and fewer.
TYPED_TEST(LuPanels, OfRandomElements) {
    using T = TypeParam;
    ASSERT_GE(lumo::LuPanel<T>::mostRows(), 2048);
    const std::array<int, 3> shapes[] = {{1, 1, 0},    {9, 9, 0},     {256, 31, 5},
                                         {257, 32, 0}, {700, 17, 64}, {2000, 32, 0}};
    for (auto [m, n, first] : shapes) {
        const auto panel = Matrix<T>::random(m, n, m + 3, m);
        std::vector<int> pivots;
        const auto result = this->factors(panel, first, pivots).first;
        EXPECT_LT(luResidual(panel, result, pivots), luBound) << m;
    }
}

// Odd elements in row i, or all rows, of column j: equal candidates, columns of zeros, numbers that
// are none, and pivots whose reciprocal overflows; of whole numbers, so that nothing is rounded
// before the last column.
TYPED_TEST(LuPanels, ChooseAsLapackDoes) {
    using T = TypeParam;
    const double nan = std::nan(""), infinity = HUGE_VAL,
                 tiny = std::numeric_limits<RealOf<T>>::denorm_min() * 8;
    const std::tuple<int, int, double> cases[] = {
        {0, 0, 1.0},   {-1, 0, 0.0}, {-1, 1, 0.0},  {-1, 2, 0.0},       {0, 0, nan},
        {299, 0, nan}, {1, 1, nan},  {280, 2, nan}, {290, 0, infinity}, {-1, 0, tiny}};
    for (auto [i, j, odd] : cases) {
        SCOPED_TRACE(testing::Message() << odd << " at " << i << ", " << j);
        auto panel = Matrix<T>::random(300, 3, 301);
        for (T& x : panel.data)
            if (!(x == Matrix<T>::mark()))
                x = scalar<T>(std::round(wide(x).real()), std::round(wide(x).imag()));
        for (int row = 0; row < 300; ++row)
            if (i == row || i < 0) panel(row, j) = scalar<T>(odd);
        std::vector<int> pivots;
        auto [result, expected] = this->factors(panel, 0, pivots);
        for (std::size_t k = 0; k < result.data.size(); ++k) {
            const auto is = wide(result.data[k]), be = wide(expected.data[k]);
            if (std::isfinite(std::abs(be)))
                EXPECT_LE(std::abs(is - be), 4 * std::abs(be) * 2 * epsilon<T>) << k;
            else
                EXPECT_FALSE(std::isfinite(std::abs(is))) << k;
        }
    }
}

// Rows are exchanged before and behind the panel, and those behind it solved with its triangle.
TYPED_TEST(LuPanels, ApplyToColumnsBeside) {
    using T = TypeParam;
    constexpr int m = 300;
    const std::array<int, 3> shapes[] = {
        {0, 1, 1}, {5, lumo::luPanelColumns, 70}, {64, 17, 0}, {3, 31, 200}};
    for (auto [left, n, right] : shapes) {
        SCOPED_TRACE(testing::Message() << left << ", " << n << ", " << right << " columns");
        auto expected = Matrix<T>::random(m, left + n + right, m + 1, unsigned(n));
        const OnDevice<T> a(expected);
        T *const panel = a.data() + std::size_t(left) * a.ld(), *const b =
                                                                    panel + std::size_t(n) * a.ld();
        const typename TestFixture::Exchanges exchanges(n);
        exchanges.factorize(m, n, panel, a.ld(), 0);
        lumo::LuPanel<T>::applyTo(left, right, b, n, panel, a.ld(), exchanges.table());

        const Matrix<T> result = a.download();
        const Matrix<int> pivots = exchanges.ints.download();
        const auto isPanels = [left = left, n = n](int j) { return j >= left && j < left + n; };
        for (int j = 0; j < expected.n; ++j)
            for (int i = 0; i < (isPanels(j) ? m : n); ++i)
                if (isPanels(j))
                    expected(i, j) = result(i, j);
                else
                    std::swap(expected(i, j), expected(pivots(i, 0) - 1, j));
        if (right > 0)
            cpu::trsm<Plain<T>>('L', 'L', 'N', 'U', n, right, 1, plain(&result(0, left)), result.ld,
                                plain(&expected(0, left + n)), expected.ld);
        for (int j = 0; j < expected.n; ++j)
            for (int i = 0; i < m; ++i) {
                const double rounding = j >= left + n && i < n ? 100 * n * epsilon<T> : 0;
                ASSERT_LE(std::abs(wide(result(i, j)) - wide(expected(i, j))), rounding)
                    << i << ", " << j;
            }
        EXPECT_TRUE(result.paddingUntouched());
    }
}

// --- Panels of QR --------------------------------------------------------------------------------

template <class T>
class QrPanels : public OnMachine {
  protected:
    void SetUp() override { this->start(machine(70)); }

    // Of random elements, each times `scale`, a column of them zero below the diagonal.
    static void expectFactors(int m, int n, double scale, int zeroColumn) {
        SCOPED_TRACE(testing::Message() << m << " x " << n << ", times " << scale);
        auto panel = Matrix<T>::random(m, n, m + 3, m);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i)
                panel(i, j) = j == zeroColumn && i > 0 ? T(0) : RealOf<T>(scale) * panel(i, j);
        constexpr int above = 3;
        Twins<T> a(panel), tau(poisoned<T>(n, 1));
        const OnDevice<T> v(poisoned<T>(above + m, n)), w(poisoned<T>(above + m, n));
        lumo::QrPanel<T>(m).factorize(m, n, a.gpu(), a.host.ld, tau.gpu(), above, v.data(),
                                      w.data(), above + m);
        auto t = poisoned<T>(n, n);
        cpu::qrPanel<Plain<T>>(m, n, a.cpu(), a.host.ld, plain(t.data.data()), t.ld);
        for (int j = 0; j < n; ++j) tau.host(j, 0) = t(j, j);
        const double ulps = 40 + 8 * std::sqrt(m);
        const Matrix<T> result = a.device.download();
        EXPECT_TRUE(result.paddingUntouched());
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) {
                const double error = std::abs(wide(result(i, j)) - wide(a.host(i, j)));
                ASSERT_LE(error, ulps * epsilon<T> * (i > j ? 1 : scale * std::sqrt(m)))
                    << "element " << i << ", " << j;
            }
        tau.expectSame(ulps);
        // V is what A has below its diagonal; W, of unit columns' multiples, V T.
        const Matrix<T> plainV = v.download(), product = w.download();
        for (int c = 0; c < n; ++c)
            for (int i = 0; i < above + m; ++i) {
                const int row = i - above;
                Wide expected = 0;
                for (int k = 0; k <= std::min(row, c); ++k)
                    expected += (k == row ? Wide(1) : wide(a.host(row, k))) * wide(t(k, c));
                ASSERT_EQ(row > c ? result(row, c) : T(row == c), plainV(i, c)) << i << " " << c;
                ASSERT_LE(std::abs(wide(product(i, c)) - expected), ulps * 2 * epsilon<T>)
                    << i << " " << c;
            }
    }
};
TYPED_TEST_SUITE(QrPanels, ElementTypes);

// Around a block's rows, with one block and several, numbers whose squares overflow or vanish.
TYPED_TEST(QrPanels, AreTheCpus) {
    using T = TypeParam;
    ASSERT_GE(lumo::QrPanel<T>::mostRows(), 2000);
    constexpr int most = lumo::qrPanelColumns<T>;
    const double small = 1e3 * std::numeric_limits<RealOf<T>>::min(),
                 large = std::numeric_limits<RealOf<T>>::max() / 1e5;
    for (auto [m, n] : {std::pair{1, 1}, {9, 9}, {256, most - 1}, {257, most}, {2000, most}})
        for (double scale : {1.0, small, large}) this->expectFactors(m, n, scale, -1);
    this->expectFactors(300, 5, 1, 0);
}

// --- Panels of a CPU -----------------------------------------------------------------------------

template <class T>
class CpuPanels : public ::testing::Test {};
TYPED_TEST_SUITE(CpuPanels, ElementTypes);

// In halves and halves of halves, square and tall, and with a column of zeros.
TYPED_TEST(CpuPanels, AreThoseOfColumns) {
    using T = TypeParam;
    using P = Plain<T>;
    const std::array<int, 3> shapes[] = {{17, 17, -1}, {40, 34, 5}, {48, 48, -1}, {300, 70, 40}};
    for (auto [m, n, zeros] : shapes) {
        SCOPED_TRACE(testing::Message() << m << " x " << n);
        auto a = Matrix<T>::random(m, n, m + 2, unsigned(m));
        for (int i = 0; i < m && zeros >= 0; ++i) a(i, zeros) = T(0);
        auto expected = a;
        auto t = poisoned<T>(n, n, n + 1), tau = poisoned<T>(n, 1), factor = poisoned<T>(n, n);
        cpu::qrPanel<P>(m, n, plain(a.data.data()), a.ld, plain(t.data.data()), t.ld);
        ASSERT_EQ(0, cpu::withWorkspace<P>(n, [&, m = m, n = n](P* work, int size) {
                      return cpu::geqrf<P>(m, n, plain(expected.data.data()), expected.ld,
                                           plain(tau.data.data()), work, size);
                  }));
        cpu::larft<P>('F', 'C', m, n, plain(expected.data.data()), expected.ld,
                      plain(tau.data.data()), plain(factor.data.data()), n);
        const double bound = 2000 * std::sqrt(m) * epsilon<T>;
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < m; ++i)
                ASSERT_LE(std::abs(wide(a(i, j)) - wide(expected(i, j))), bound) << i << ", " << j;
            for (int i = 0; i <= j; ++i)
                ASSERT_LE(std::abs(wide(t(i, j)) - wide(factor(i, j))), bound) << i << ", " << j;
            for (int i = j + 1; i < n; ++i) ASSERT_TRUE(std::isnan(wide(t(i, j)).real()));
        }
        EXPECT_TRUE(a.paddingUntouched() && t.paddingUntouched());
    }
}

}  // namespace
}  // namespace test
