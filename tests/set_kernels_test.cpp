// Constants: LASET, matrices, vectors, triangles, single elements, and device memory as a whole.
#include <cstring>

#include "basic/LASET/LASET.h"
#include "basic/Set/Set.h"
#include "cudalib/Algorithm/Memset.h"
#include "support/kernels.h"

namespace test {
namespace {

template <class T>
class SetKernels : public OnMachine {
  protected:
    template <int K>
    static void set() {
        for (auto [m, n] : shapes<T>()) {
            const OnDevice a(poisoned<T>(m, n, m + 1));
            lumo::setMatrix<K>(m, n, a.data(), a.ld());
            expectElements(a, [](int, int) { return T(K); });
        }
        for (int inc : {1, 3}) {
            const OnDevice x(poisoned<T>(1, 1500, inc));
            lumo::setVector<K>(1500, x.data(), inc);
            expectElements(x, [](int, int) { return T(K); });
            lumo::setElement<1 - K>(x.data());
            expectElements(x, [](int, int j) { return T(j == 0 ? 1 - K : K); });
        }
    }

    template <int K>
    static void setTriangle(char uplo, char diag, int m, int n) {
        const OnDevice<T> a(m, n, 3);
        lumo::setTriangle<K>(uplo, diag, m, n, a.data(), a.ld());
        const bool unit = diag == 'U' || diag == 'Z';
        expectElements(a, [&](int i, int j) {
            if (i == j) return unit ? T(1) : a(i, j);
            return (uplo == 'U' ? i > j : i < j) ? T(K) : a(i, j);
        });
    }
};
TYPED_TEST_SUITE(SetKernels, ElementTypes);

TYPED_TEST(SetKernels, LasetSetsThePartAndTheDiagonal) {
    using T = TypeParam;
    const T alpha = scalar<T>(2, 3), beta = scalar<T>(-5, 7);
    for (auto [m, n] : shapes<T>())
        for (char uplo : {'u', 'L', 'A', 'f'}) {
            SCOPED_TRACE(uplo);
            const OnDevice<T> a(m, n, 3);
            lumo::LASET(uplo, m, n, alpha, beta, a.data(), a.ld());
            expectElements(a, [&, uplo](int i, int j) {
                if (i == j) return beta;
                const bool selected = uplo == 'u' ? i < j : uplo == 'L' ? i > j : true;
                return selected ? alpha : a(i, j);
            });
        }
}

TYPED_TEST(SetKernels, MatricesVectorsElements) {
    this->template set<0>();
    this->template set<1>();
}

TYPED_TEST(SetKernels, TheTriangleOppositeToTheNamedOne) {
    for (auto [m, n] : shapes<TypeParam>())
        // Letters count as given: 'u' is any other letter.
        for (char uplo : {'U', 'L', 'u'})
            for (char diag : {'U', 'Z', 'N', 'u'}) {
                SCOPED_TRACE((std::string{uplo, diag}));
                this->template setTriangle<0>(uplo, diag, m, n);
                this->template setTriangle<1>(uplo, diag, m, n);
            }
}

class SetLaunches : public OnSoftwareDevice {};

TEST_F(SetLaunches, LasetChecksInOrder) {
    float x = 0, *null = nullptr;
    expectChecks(&lumo::LASET<float>, {1, 2, 3, 6, 7}, {'x', -1, -1, 0, 1, null, 1},
                 {'u', 2, 1, 0, 1, &x, 2});
    for (auto [m, n] : {std::pair{0, 1}, {1, 0}})
        EXPECT_EQ(0,
                  argumentError([&, m = m, n = n] { lumo::LASET('F', m, n, 0.f, 1.f, null, 0); }));
}

TEST_F(SetLaunches, NothingForGuardedArguments) {
    const OnDevice<float> a(2, 2, 0);
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
}  // namespace test
