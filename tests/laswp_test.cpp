// Row and column interchanges.
#include "basic/LASWP/LASWP.h"

#include <numeric>
#include <utility>

#include "support/kernels.h"

namespace {

using test::argumentError;
using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;

// Pivots as LU chooses them: row r (from 1) is exchanged with one at or below it.
std::vector<int> pivots(int count, int rows) {
    std::mt19937 engine(7);
    std::vector<int> p(count);
    for (int r = 0; r < count; ++r) p[r] = std::uniform_int_distribution<int>(r + 1, rows)(engine);
    return p;
}

template <class T>
void interchangeRows(Matrix<T>& a, int k1, int k2, const std::vector<int>& p) {
    for (int k = k1; k <= k2; ++k)
        for (int j = 0; j < a.n; ++j) std::swap(a(k - 1, j), a(p[k - 1] - 1, j));
}

template <class T>
void interchangeColumns(Matrix<T>& a, int k1, int k2, const std::vector<int>& p) {
    for (int k = k1; k <= k2; ++k)
        for (int i = 0; i < a.m; ++i) std::swap(a(i, k - 1), a(i, p[k - 1] - 1));
}

template <class T>
class Interchanges : public test::OnMachine {
  protected:
    void rows(int m, int n, int k1, int k2) {
        auto expected = Matrix<T>::random(m, n, m + 3);
        const auto p = pivots(k2, m);
        OnDevice<T> a(expected);
        lumo::LASWP(n, a.data(), a.ld(), k1, k2, p.data(), 1);
        interchangeRows(expected, k1, k2, p);
        EXPECT_EQ(expected, a.download()) << m << " x " << n << ", " << k1 << " to " << k2;
    }
    void columns(int m, int n, int k1, int k2) {
        auto expected = Matrix<T>::random(m, n, m + 3);
        const auto p = pivots(k2, n);
        OnDevice<T> a(expected);
        lumo::LASWPCOL(m, a.data(), a.ld(), k1, k2, p.data(), 1);
        interchangeColumns(expected, k1, k2, p);
        EXPECT_EQ(expected, a.download()) << m << " x " << n << ", " << k1 << " to " << k2;
    }
};
TYPED_TEST_SUITE(Interchanges, test::ElementTypes);

TYPED_TEST(Interchanges, EqualAPlainForwardLoop) {
    for (auto [k1, k2] : {std::pair{1, 2}, {1, 16}, {1, 17}, {3, 40}})
        for (int other : {1, 15, 1025}) {
            this->rows(50, other, k1, k2);
            this->columns(other, 50, k1, k2);
        }
}

TYPED_TEST(Interchanges, BeyondSixteenBitsOfRows) {
    using T = TypeParam;
    constexpr int m = 70000;
    auto expected = Matrix<T>::random(m, 2);
    std::vector<int> p(36);
    std::iota(p.begin(), p.end(), 2);
    p[3] = 65537;  // the largest of a launch each
    p[20] = 65536;
    p[33] = m;
    OnDevice<T> a(expected);
    lumo::LASWP(2, a.data(), a.ld(), 1, 36, p.data(), 1);
    interchangeRows(expected, 1, 36, p);
    EXPECT_EQ(expected, a.download());

    auto wide = Matrix<T>::random(2, m);
    OnDevice<T> b(wide);
    lumo::LASWPCOL(2, b.data(), b.ld(), 1, 36, p.data(), 1);
    interchangeColumns(wide, 1, 36, p);
    EXPECT_EQ(wide, b.download());
}

class InterchangeLaunches : public test::OnSoftwareDevice {};

// Every row stays in place.
std::vector<int> identity(int count) {
    std::vector<int> p(count);
    std::iota(p.begin(), p.end(), 1);
    return p;
}

TEST_F(InterchangeLaunches, SixteenALaunchAndNoneForASingleOne) {
    const std::string kernel = "KernelLASWP<cudalib::Map1D, float>";
    const auto before = Matrix<float>::random(40, 2);
    OnDevice<float> a(before);
    auto launched = [&](int k1, int k2) {
        return launchedBy(
            [&] { lumo::LASWP(2, a.data(), a.ld(), k1, k2, identity(k2).data(), 1); });
    };
    EXPECT_EQ(Names{}, launched(5, 5));
    EXPECT_EQ(Names{}, launched(6, 5));
    EXPECT_EQ(Names{kernel}, launched(1, 16));
    EXPECT_EQ((Names{kernel, kernel}), launched(1, 17));
    EXPECT_EQ(before, a.download());
}

TEST_F(InterchangeLaunches, ArgumentBlock) {
    const Names block{"4@0", "8@8", "4@16", "4@20", "4@24", "32@28"};
    OnDevice<float> a(Matrix<float>(2, 2));
    for (auto launcher : {&lumo::LASWP<float>, &lumo::LASWPCOL<float>})
        EXPECT_EQ(block, test::argumentsPushedBy(
                             [&] { launcher(2, a.data(), a.ld(), 1, 2, identity(2).data(), 1); }));
}

TEST_F(InterchangeLaunches, ChecksInOrder) {
    float x = 0, *null = nullptr;
    const int one[] = {1};
    using Launcher = void (*)(int, float*, int, int, int, const int*, int);
    auto info = [&](Launcher f, int n, float* a, int lda, int k1, int k2, const int* p) {
        return argumentError([&] { f(n, a, lda, k1, k2, p, 1); });
    };
    for (Launcher f : {&lumo::LASWP<float>, &lumo::LASWPCOL<float>}) {
        EXPECT_EQ(-1, info(f, -1, null, -1, -1, -1, nullptr));
        EXPECT_EQ(-2, info(f, 2, null, -1, -1, -1, nullptr));
        EXPECT_EQ(-3, info(f, 2, &x, -1, -1, -1, nullptr));
        EXPECT_EQ(-4, info(f, 2, &x, 2, -1, -1, nullptr));
        EXPECT_EQ(-5, info(f, 2, &x, 2, 1, -1, nullptr));
        EXPECT_EQ(-6, info(f, 2, &x, 2, 1, 1, nullptr));
        EXPECT_EQ(0, info(f, 0, null, -1, -1, -1, nullptr));
        EXPECT_EQ(0, info(f, 2, &x, 2, 1, 1, one));
    }
    // Columns need a leading dimension that holds the rows; for rows any will do.
    EXPECT_EQ(-3, info(&lumo::LASWPCOL<float>, 2, &x, 1, 1, 1, one));
    EXPECT_EQ(0, info(&lumo::LASWP<float>, 2, &x, 0, 1, 1, one));
}

}  // namespace
