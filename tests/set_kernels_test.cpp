// Constants: LASET, matrices, vectors, triangles, single elements, and device memory as a whole.
#include <cstring>

#include "basic/LASET/LASET.h"
#include "basic/Set/Set.h"
#include "cudalib/Algorithm/Memset.h"
#include "support/kernels.h"

namespace {

using test::argumentError;
using test::argumentsPushedBy;
using test::expectElements;
using test::launchedBy;
using test::Matrix;
using test::Names;
using test::OnDevice;

template <class T>
class SetKernels : public test::OnMachine {
  protected:
    template <int K>
    void triangle(int m, int n, char uplo, char diag) {
        const auto before = Matrix<T>::random(m, n, m + 3);
        OnDevice<T> a(before);
        lumo::setTriangle<K>(uplo, diag, m, n, a.data(), a.ld());
        const bool unit = diag == 'U' || diag == 'Z';
        expectElements(a.download(), [&](int i, int j) {
            if (i == j) return unit ? T(1) : before(i, j);
            return (uplo == 'U' ? i > j : i < j) ? T(K) : before(i, j);
        });
    }
};
TYPED_TEST_SUITE(SetKernels, test::ElementTypes);

TYPED_TEST(SetKernels, LasetSetsThePartAndTheDiagonal) {
    using T = TypeParam;
    const T alpha = test::scalar<T>(2, 3), beta = test::scalar<T>(-5, 7);
    for (auto [m, n] : test::shapes)
        for (char uplo : {'u', 'L', 'A', 'f'}) {
            SCOPED_TRACE(uplo);
            const auto before = Matrix<T>::random(m, n, m + 3);
            OnDevice<T> a(before);
            lumo::LASET(uplo, m, n, alpha, beta, a.data(), a.ld());
            expectElements(a.download(), [&](int i, int j) {
                if (i == j) return beta;
                const bool selected = uplo == 'u' ? i < j : uplo == 'L' ? i > j : true;
                return selected ? alpha : before(i, j);
            });
        }
}

TYPED_TEST(SetKernels, MatricesVectorsElements) {
    using T = TypeParam;
    for (auto [m, n] : test::shapes) {
        OnDevice<T> zero(test::poisoned<T>(m, n, m + 1)), one(test::poisoned<T>(m, n, m + 2));
        lumo::setMatrix<0>(m, n, zero.data(), zero.ld());
        lumo::setMatrix<1>(m, n, one.data(), one.ld());
        expectElements(zero.download(), [](int, int) { return T(0); });
        expectElements(one.download(), [](int, int) { return T(1); });
    }
    for (int inc : {1, 3}) {
        OnDevice<T> x(test::poisoned<T>(1, 1500, inc));
        lumo::setVector<1>(1500, x.data(), inc);
        expectElements(x.download(), [](int, int) { return T(1); });
        lumo::setVector<0>(1500, x.data(), inc);
        lumo::setElement<1>(x.data());
        expectElements(x.download(), [](int, int j) { return T(j == 0 ? 1 : 0); });
        lumo::setElement<0>(x.data());
        EXPECT_EQ(T(0), x.download()(0, 0));
    }
}

TYPED_TEST(SetKernels, TheTriangleOppositeToTheNamedOne) {
    for (auto [m, n] : test::shapes)
        // Letters count as given: 'u' is any other letter.
        for (char uplo : {'U', 'L', 'u'})
            for (char diag : {'U', 'Z', 'N', 'u'}) {
                SCOPED_TRACE((std::string{uplo, diag}));
                this->template triangle<0>(m, n, uplo, diag);
                this->template triangle<1>(m, n, uplo, diag);
            }
}

class SetLaunches : public test::OnSoftwareDevice {};

TEST_F(SetLaunches, LasetChecksInOrder) {
    float x = 0, *null = nullptr;
    auto info = [&](char uplo, int m, int n, float* a, int lda) {
        return argumentError([&] { lumo::LASET(uplo, m, n, 0.0f, 1.0f, a, lda); });
    };
    EXPECT_EQ(-1, info('x', -1, -1, null, 0));
    EXPECT_EQ(-2, info('u', -1, -1, null, 0));
    EXPECT_EQ(-3, info('a', 1, -1, null, 0));
    EXPECT_EQ(-6, info('a', 2, 1, null, 1));
    EXPECT_EQ(-7, info('L', 2, 1, &x, 1));
    EXPECT_EQ(0, info('F', 0, 1, null, 0));
    EXPECT_EQ(0, info('F', 1, 0, null, 0));
}

TEST_F(SetLaunches, NothingForGuardedArguments) {
    OnDevice<float> a(Matrix<float>(2, 2));
    float* p = a.data();
    EXPECT_EQ(Names{}, launchedBy([&] {
                  lumo::LASET('A', 0, 2, 1.0f, 1.0f, p, 2);
                  lumo::LASET('A', 2, 0, 1.0f, 1.0f, p, 2);
                  lumo::setMatrix<0>(0, 2, p, 2);
                  lumo::setMatrix<0>(2, -1, p, 2);
                  lumo::setMatrix<0>(2, 2, p, 0);
                  lumo::setVector<0>(0, p, 1);
                  lumo::setVector<0>(2, p, 0);
                  lumo::setTriangle<0>('U', 'U', 2, 0, p, 2);
                  cudalib::memset(p, 0, 1.0f);
              }));
}

TEST_F(SetLaunches, MatricesBeyondOneGrid) {
    for (auto [m, n] : {std::pair{test::beyondOneGrid, 2}, {2, test::beyondOneGrid}})
        for (char uplo : {'U', 'L'}) {
            const Matrix<float> before(m, n);
            OnDevice<float> a(before), b(before);
            lumo::LASET(uplo, m, n, 2.0f, 3.0f, a.data(), a.ld());
            lumo::setTriangle<1>(uplo, 'N', m, n, b.data(), b.ld());
            auto named = [&](int i, int j) { return uplo == 'U' ? i < j : i > j; };
            const float old = Matrix<float>::mark();
            expectElements(a.download(), [&](int i, int j) {
                return i == j ? 3.0f : named(i, j) ? 2.0f : old;
            });
            expectElements(b.download(),
                           [&](int i, int j) { return i == j || named(i, j) ? old : 1.0f; });
        }
}

// The eight types, each with the offsets of its value and its count in the argument block.
template <class T>
void fills(T value, const std::string& name, const Names& pushed) {
    for (std::size_t count : {std::size_t(1), std::size_t(255), std::size_t(1025)}) {
        cudalib::ManagedMemory<T, cudalib::CudaAllocator> memory({unsigned(count) + 1, 1});
        const T other{};
        memory.copyFromHost(std::vector<T>(count + 1, other).data(), count + 1);
        auto fill = [&] { cudalib::memset(memory.data(), count, value); };
        EXPECT_EQ(Names{"CudaMemsetTypeKernel<cudalib::Map1D, " + name + ">"}, launchedBy(fill));
        EXPECT_EQ(pushed, argumentsPushedBy(fill));
        std::vector<T> result(count + 1);
        memory.copyToHost(result.data(), count + 1);
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(0, std::memcmp(&value, &result[i], sizeof value)) << name << " " << i;
        EXPECT_EQ(0, std::memcmp(&other, &result[count], sizeof other)) << name << " past the end";
    }
}

TEST_F(SetLaunches, MemsetFillsMemoryOfAnyType) {
    fills<unsigned char>(200, "unsigned char", {"8@0", "1@8", "8@16"});
    fills<char>('x', "char", {"8@0", "1@8", "8@16"});
    fills<unsigned>(4000000000u, "unsigned int", {"8@0", "4@8", "8@16"});
    fills<int>(-7, "int", {"8@0", "4@8", "8@16"});
    fills<float>(1.5f, "float", {"8@0", "4@8", "8@16"});
    fills<double>(2.5, "double", {"8@0", "8@8", "8@16"});
    fills<float2>({1, 2}, "float2", {"8@0", "8@8", "8@16"});
    fills<double2>({3, 4}, "double2", {"8@0", "16@16", "8@32"});
}

}  // namespace
