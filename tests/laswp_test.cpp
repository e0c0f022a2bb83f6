// Row and column interchanges.
#include "basic/LASWP/LASWP.h"

#include <numeric>
#include <utility>

#include "support/kernels.h"

namespace test {
namespace {

// Pivots as LU chooses them: row r (from 1) is exchanged with one at or below it.
std::vector<int> pivots(int count, int rows) {
    std::mt19937 engine(7);
    std::vector<int> p(count);
    for (int r = 0; r < count; ++r) p[r] = std::uniform_int_distribution<int>(r + 1, rows)(engine);
    return p;
}

template <class T>
class Interchanges : public OnMachine {
  protected:
    // Rows k1 ... k2 of lines x across elements, or columns of across x lines, by a plain loop.
    static void check(bool columns, int lines, int across, int k1, int k2,
                      const std::vector<int>& p) {
        SCOPED_TRACE(testing::Message() << (columns ? "columns " : "rows ") << k1 << " to " << k2
                                        << " of " << lines << ", across " << across);
        const int m = columns ? across : lines, n = columns ? lines : across;
        auto expected = Matrix<T>::random(m, n, m + 3);
        const OnDevice<T> a(expected);
        (columns ? lumo::LASWPCOL<T> : lumo::LASWP<T>)(across, a.data(), a.ld(), k1, k2, p.data(),
                                                       1);
        for (int k = k1 - 1; k < k2; ++k)
            for (int i = 0; i < across; ++i)
                columns ? std::swap(expected(i, k), expected(i, p[k] - 1))
                        : std::swap(expected(k, i), expected(p[k] - 1, i));
        EXPECT_EQ(expected, a.download());
    }
};
TYPED_TEST_SUITE(Interchanges, ElementTypes);

TYPED_TEST(Interchanges, EqualAPlainForwardLoop) {
    for (bool columns : {false, true})
        for (auto [k1, k2] : {std::pair{1, 2}, {1, 16}, {1, 17}, {3, 40}})
            for (int across : {1, 15, 1025})
                this->check(columns, 50, across, k1, k2, pivots(k2, 50));
}

TYPED_TEST(Interchanges, BeyondSixteenBitsOfRows) {
    std::vector<int> p(36);
    std::iota(p.begin(), p.end(), 2);
    p[3] = 65537;  // the largest of a launch each
    p[20] = 65536;
    p[33] = 70000;
    for (bool columns : {false, true}) this->check(columns, 70000, 2, 1, 36, p);
}

}  // namespace
}  // namespace test
