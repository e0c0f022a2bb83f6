// Kernels that work element by element, each beside a plain loop.
#include <cctype>

#include "basic/Complement/Complement.h"
#include "basic/Conjugate/Conjugate.h"
#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/MADD/MADD.h"
#include "basic/MakeReal/MakeReal.h"
#include "basic/Precision/Precision.h"
#include "basic/Scale/Scale.h"
#include "basic/Set/Set.h"
#include "basic/Subtract/Subtract.h"
#include "basic/Transpose/Transpose.h"
#include "support/kernels.h"

namespace test {
namespace {

using lumo::Complex;
using lumo::conjugate;

// Products may be fused with sums on the device.
constexpr double ulps = 8;

// launch(m, n, a, lda, b, ldb) makes wanted(a, b, i, j) of each pair of elements, in B.
template <class From, class To = From, class Launch, class Wanted>
void onMatrices(Launch launch, Wanted wanted, const std::vector<Shape>& sizes = shapes<From>()) {
    for (auto [m, n] : sizes) {
        SCOPED_TRACE(testing::Message() << m << " x " << n);
        const OnDevice<From> a(m, n, 3);
        const OnDevice<To> b(m, n, 1);
        launch(m, n, a.data(), a.ld(), b.data(), b.ld());
        expectElements(b, [&](int i, int j) { return wanted(a(i, j), b(i, j), i, j); });
    }
}

// launch(n, x, incx, y, incy) makes wanted(x, y, i) of each pair of elements, in y.
template <class From, class To = From, class Launch, class Wanted>
void onVectors(Launch launch, Wanted wanted, double ulps = 0) {
    for (auto [incx, incy] : {std::pair{1, 1}, {3, 2}}) {
        const OnDevice x(vectorOf<From>(1500, incx, 1));
        const OnDevice y(vectorOf<To>(1500, incy, 2));
        launch(1500, x.data(), incx, y.data(), incy);
        expectElements(
            y, [&](int i, int j) { return wanted(x(i, j), y(i, j), j); }, ulps);
    }
}

// The same for what works in place, in B or y.
template <class T>
auto inMatrix(void (*launch)(int, int, T*, int)) {
    return [launch](int m, int n, T*, int, T* b, int ldb) { launch(m, n, b, ldb); };
}
template <class T>
auto inVector(void (*launch)(int, T*, int)) {
    return [launch](int n, T*, int, T* y, int incy) { launch(n, y, incy); };
}

// The first element alone is worked on.
template <class F>
auto first(F f) {
    return [f](auto x, auto y, int i) { return i == 0 ? f(x, y) : y; };
}

template <class T>
class Elementwise : public OnMachine {};
TYPED_TEST_SUITE(Elementwise, ElementTypes);

template <int K, class T>
void constants() {
    auto constant = [](T, T, int, int = 0) { return T(K); };
    onMatrices<T>(inMatrix(lumo::setMatrix<K, T>), constant);
    onVectors<T>(inVector(lumo::setVector<K, T>), constant);
    onVectors<T>([](int, T*, int, T* y, int) { lumo::setElement<K>(y); },
                 first([](T, T) { return T(K); }));
    // Letters count as given: 'u' is any other letter.
    for (char uplo : {'U', 'L', 'u'})
        for (char diag : {'U', 'Z', 'N', 'u'}) {
            SCOPED_TRACE((std::string{uplo, diag}));
            const bool upper = uplo == 'U', unit = diag == 'U' || diag == 'Z';
            auto set = [&](int m, int n, T*, int, T* b, int ldb) {
                lumo::setTriangle<K>(uplo, diag, m, n, b, ldb);
            };
            onMatrices<T>(set, [&](T, T b, int i, int j) {
                if (i == j) return unit ? T(1) : b;
                return upper == (i > j) ? T(K) : b;
            });
        }
}
TYPED_TEST(Elementwise, Constants) {
    constants<0, TypeParam>();
    constants<1, TypeParam>();
}

TYPED_TEST(Elementwise, PartsOfMatrices) {
    using T = TypeParam;
    const T alpha = scalar<T>(2, 3), beta = scalar<T>(-5, 7);
    for (char uplo : {'U', 'u', 'L', 'l', 'A', 'a', 'F', 'f'}) {
        SCOPED_TRACE(uplo);
        auto inPart = [letter = std::toupper(uplo)](int i, int j) {
            return letter == 'U' ? i <= j : letter == 'L' ? i >= j : true;
        };
        auto copy = [&](int m, int n, T* a, int lda, T* b, int ldb) {
            lumo::LACPY(uplo, m, n, a, lda, b, ldb);
        };
        auto set = [&](int m, int n, T*, int, T* b, int ldb) {
            lumo::LASET(uplo, m, n, alpha, beta, b, ldb);
        };
        onMatrices<T>(copy, [&](T a, T b, int i, int j) { return inPart(i, j) ? a : b; });
        onMatrices<T>(set, [&](T, T b, int i, int j) {
            return i == j ? beta : inPart(i, j) ? alpha : b;
        });
    }
    onMatrices<T>(lumo::copyMatrix<T>, [](T a, T, int, int) { return a; });
}

TYPED_TEST(Elementwise, Vectors) {
    using T = TypeParam;
    const T alpha = scalar<T>(-3, 0.5);
    const OnDevice factor(filled<T>(1, 1, alpha));
    auto scale = [&](int flag) {
        return [&factor, flag](int n, T*, int, T* y, int inc) {
            lumo::scale(n, y, factor.data(), inc, flag);
        };
    };
    onVectors<T>(lumo::copyVector<T>, [](T x, T, int) { return x; });
    onVectors<T>(lumo::complementVector<T>, [](T x, T, int) { return T(1) - x; });
    onVectors<T>(inVector(lumo::conjugateVector<T>), [](T, T y, int) { return conjugate(y); });
    onVectors<T>(
        scale(2), [&](T, T y, int) { return y * alpha; }, ulps);
    onVectors<T>(
        scale(0), [&](T, T y, int) { return y / alpha; }, ulps);
    onVectors<T>([](int, T* x, int, T* y, int) { lumo::copyElement(x, y); },
                 first([](T x, T) { return x; }));
    onVectors<T>([](int, T* x, int, T* y, int) { lumo::complementElement(x, y); },
                 first([](T x, T) { return T(1) - x; }));
}

TYPED_TEST(Elementwise, Transposes) {
    using T = TypeParam;
    for (bool conjugated : {false, true}) {
        auto expectFlipped = [conjugated](const OnDevice<T>& from, const OnDevice<T>& to) {
            expectElements(
                to, [&](int i, int j) { return conjugated ? conjugate(from(j, i)) : from(j, i); });
        };
        for (auto [m, n] : shapes<T>()) {
            const OnDevice<T> from(m, n, 3), to(n, m, 2);
            lumo::transpose(to.data(), to.ld(), from.data(), from.ld(), m, n, conjugated);
            expectFlipped(from, to);
        }
        for (int n : {1, 15, 16, 33, 64, 65, 130}) {
            const OnDevice<T> a(n, n, 1);
            lumo::transposeInplace(a.data(), a.ld(), n, conjugated);
            expectFlipped(a, a);
        }
    }
}

// X, where op(X) is m x n, and its elements.
template <class T>
OnDevice<T> operand(bool transposed, int m, int n, int pad) {
    return transposed ? OnDevice<T>(n, m, pad) : OnDevice<T>(m, n, pad);
}
template <class T>
T element(const OnDevice<T>& x, bool transposed, int i, int j) {
    return transposed ? x(j, i) : x(i, j);
}

TYPED_TEST(Elementwise, SumsOfMatrices) {
    using T = TypeParam;
    const RealOf<T> alpha = 1.5, beta = -0.75;
    for (auto [m, n] : shapes<T>())
        // "C" and "t" transpose nothing.
        for (auto [transa, transb] :
             {std::pair{'N', 'C'}, {'C', 't'}, {'t', 'T'}, {'T', 'N'}, {'T', 'T'}}) {
            SCOPED_TRACE((std::string{transa, transb}));
            const bool ta = transa == 'T', tb = transb == 'T';
            const auto a = operand<T>(ta, m, n, 3), b = operand<T>(tb, m, n, 2);
            const OnDevice<T> c(m, n, 1);
            EXPECT_EQ(cudaSuccess, lumo::MADD(transa, transb, m, n, a.data(), a.ld(), b.data(),
                                              b.ld(), c.data(), c.ld(), alpha, beta));
            auto sum = [&](int i, int j) {
                return alpha * element(a, ta, i, j) + beta * element(b, tb, i, j);
            };
            expectElements(c, sum, ulps);
        }
}

// A that is transposed lies in memory for both shapes; what belongs to neither stays as it is.
template <class T>
void subtract(char transa, char transb, bool ta, bool tb, int m, int n) {
    const auto a = ta ? OnDevice<T>(std::max(m, n), std::max(m, n), 2) : OnDevice<T>(m, n, 3);
    const auto b = operand<T>(tb, m, n, 1);
    EXPECT_EQ(cudaSuccess,
              lumo::subtractMatrix(transa, transb, m, n, a.data(), a.ld(), b.data(), b.ld()));
    expectElements(a, [&](int i, int j) {
        if (i >= m || j >= n) return a(i, j);
        return element(a, ta, i, j) - element(b, tb, i, j);
    });
}

TYPED_TEST(Elementwise, DifferencesInPlace) {
    constexpr Shape sizes[] = {{1, 1},     {15, 17},  {33, 16},  {64, 65},
                               {130, 130}, {20, 150}, {150, 20}, {600, 500}};
    // "TC" leaves B as it is; "C" as the first letter transposes it, whatever its own.
    for (const std::string letters : {"NN", "tc", "NT", "NC", "TT", "TN", "TC", "CN", "CC"}) {
        SCOPED_TRACE(letters);
        const bool ta = letters[0] == 'T' || letters[0] == 'C';
        const bool tb = letters[0] == 'C' || letters[1] == 'T' || letters == "NC";
        for (auto [m, n] : sizes) subtract<TypeParam>(letters[0], letters[1], ta, tb, m, n);
    }
    for (auto [m, n] : beyondOneGrid<TypeParam>()) subtract<TypeParam>('N', 'T', false, true, m, n);
}

// --- Between types -----------------------------------------------------------------------------

template <class R>
class RealAndComplex : public OnMachine {};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(RealAndComplex, Reals);

template <class From, class To>
void convertTriangle() {
    onMatrices<From, To>(lumo::precisionConvertTriangular<From, To>,
                         [](From a, To b, int i, int j) {
                             return i <= j ? scalar<To>(wide(a).real(), wide(a).imag()) : b;
                         });
}

TYPED_TEST(RealAndComplex, Conversions) {
    using R = TypeParam;
    using Z = Complex<R>;
    onVectors<R, Z>([](int n, R* x, int incx, Z* y,
                       int incy) { lumo::copyVectorRealToComplex(n, y, incy, x, incx); },
                    [](R x, Z, int) { return Z(x); });
    onVectors<Z, R>(lumo::copyVectorComplexToReal<R>, [](Z x, R, int) { return x.re; });
    onVectors<R, Z>([](int, R* x, int, Z* y, int) { lumo::copyElementRealToComplex(x, y); },
                    first([](R x, Z) { return Z(x); }));
    onVectors<Z, R>([](int, Z* x, int, R* y, int) { lumo::copyElementComplexToReal(x, y); },
                    first([](Z x, R) { return x.re; }));
    onVectors<Z>([](int, Z*, int, Z* y, int) { lumo::makeReal(y); },
                 first([](Z, Z y) { return Z(y.re); }));
    using Other = std::conditional_t<std::is_same_v<R, float>, double, float>;
    convertTriangle<R, Other>();
    convertTriangle<Z, Complex<Other>>();
}

TYPED_TEST(RealAndComplex, ConjugatedMatrices) {
    using Z = Complex<TypeParam>;
    const auto sizes = shapes<TypeParam>();
    onMatrices<Z>(
        inMatrix(lumo::conjugateMatrix<Z>), [](Z, Z b, int, int) { return conjugate(b); }, sizes);
    onMatrices<Z>(
        inMatrix(lumo::conjugateMatrixLower<Z>),
        [](Z, Z b, int i, int j) { return i >= j ? conjugate(b) : b; }, sizes);
}

}  // namespace
}  // namespace test
