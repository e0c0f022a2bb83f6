#include "basic/Transpose/Transpose.h"

#include "support/machine.h"
#include "support/matrix.h"

namespace {

using test::Matrix;

template <class T>
class TransposeTest : public test::OnMachine {
  protected:
    // Sizes around the tiles of both machines.
    void outOfPlace(bool conjugated) {
        for (auto [m, n] : {std::pair{1, 1}, {16, 16}, {17, 5}, {64, 65}, {131, 70}}) {
            const auto source = Matrix<T>::random(m, n, m + 3);
            test::OnDevice<T> src(source), dst(Matrix<T>(n, m, n + 2));
            lumo::transpose(dst.data(), dst.ld(), src.data(), src.ld(), m, n, conjugated);
            const Matrix<T> result = dst.download();
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i)
                    ASSERT_EQ(conjugated ? lumo::conjugate(source(i, j)) : source(i, j),
                              result(j, i))
                        << m << " x " << n << " at " << i << ", " << j;
            EXPECT_TRUE(result.paddingUntouched());
        }
    }
    void inPlace(bool conjugated) {
        for (int n : {1, 15, 16, 33, 64, 65, 130}) {
            const auto source = Matrix<T>::random(n, n, n + 1);
            test::OnDevice<T> a(source);
            lumo::transposeInplace(a.data(), a.ld(), n, conjugated);
            const Matrix<T> result = a.download();
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i)
                    ASSERT_EQ(conjugated ? lumo::conjugate(source(i, j)) : source(i, j),
                              result(j, i))
                        << "order " << n << " at " << i << ", " << j;
            EXPECT_TRUE(result.paddingUntouched());
        }
    }
};
TYPED_TEST_SUITE(TransposeTest, test::ElementTypes);

TYPED_TEST(TransposeTest, OutOfPlace) {
    this->outOfPlace(false);
    this->outOfPlace(true);
}

TYPED_TEST(TransposeTest, InPlace) {
    this->inPlace(false);
    this->inPlace(true);
}

}  // namespace
