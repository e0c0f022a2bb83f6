// sygvd and hegvd through the harness.
#include "lapack/cholesky.h"
#include "lapack/eigen.h"
#include "lapack/operands_call.h"

namespace test {
namespace {

// L^-1 X of a lower triangle.
WideMatrix solved(const WideMatrix& l, WideMatrix x) {
    cpu::trsm<Wide>('L', 'L', 'N', 'N', x.m, x.n, 1, l.data.data(), l.m, x.data.data(), x.m);
    return x;
}

template <class T>
void checkGeneralized(int itype, char jobz, char uplo, const Operand<T>& a, const Operand<T>& b,
                      const Operand<RealOf<T>>& w) {
    checkFactor(uplo, b);
    const WideMatrix A = hermitian(uplo, WideMatrix(a.before)),
                     B = hermitian(uplo, WideMatrix(b.before));
    const int n = A.n;
    // The standard problem, in double precision.
    WideMatrix f = B;
    ASSERT_EQ(0, cpu::potrf<Wide>('L', n, f.data.data(), n));
    const WideMatrix l = triangular('L', 'N', f),
                     to = itype == 1 ? solved(l, identity(n)) : op('C', l);
    const std::vector<double> expected = referenceValues(to * A * op('C', to));
    const std::vector<RealOf<T>> values = w.now().data;
    const double scale = norm1(A) * std::pow(norm1(to), 2);
    for (int i = 0; i < n; ++i)
        EXPECT_NEAR(expected[i], values[i], eigenBound * n * epsilon<T> * scale) << i;
    if (jobz == 'N') return;
    const WideMatrix x(a.now()),
        xw(n, n, [&](int i, int j) { return x(i, j) * double(values[j]); });
    const WideMatrix left = itype == 1 ? A * x : itype == 2 ? A * (B * x) : B * (A * x);
    EXPECT_LT(difference(left, itype == 1 ? B * xw : xw,
                         norm1(A) * norm1(x) * (itype == 1 ? 1 : norm1(B)), epsilon<T>),
              eigenBound);  // LAPACK xSGT01
    if (itype == 3)         // X^H B^-1 X = I
        EXPECT_LT(difference(x * op('C', x), B, norm1(B), epsilon<T>), eigenBound);
    else
        EXPECT_LT(difference(op('C', x) * (B * x), identity(n), norm1(B) * norm1(x) * norm1(x),
                             epsilon<T>),
                  eigenBound);
}

template <class T>
auto sygvdCall(int itype, char jobz, char uplo, const Matrix<T>& a, const Matrix<T>& b,
               Interface where) {
    auto check = [=](auto, auto, auto, auto, const Operand<T>& v, const Operand<T>& f,
                     const Operand<RealOf<T>>& w) { checkGeneralized(itype, jobz, uplo, v, f, w); };
    return routineCall<T>(
        where, [](auto e) { return e.sygvd; }, check, itype, jobz, uplo, a.n, stored(uplo, a),
        stored(uplo, b), Adjacent<RealOf<T>>{blank<RealOf<T>>(a.n)});
}

// kinds: as "1VU", itype, jobz and uplo.
template <class T>
std::vector<GoodCase> sygvdCases(const std::vector<std::string>& kinds, const Shapes& orders,
                                 Shrink blocks = nullptr) {
    std::vector<GoodCase> cases;
    for (const std::string& kind : kinds) {
        const auto make = [=](int n, int, Interface interface) {
            return sygvdCall(kind[0] - '0', kind[1], kind[2], Matrix<T>::random(n, n, n + 3),
                             positiveDefinite<T>(n, n + 1), interface);
        };
        cases = cases + casesOf(kind, orders, make, blocks);
    }
    return cases;
}

// A B that is not definite leaves the rest alone; an A that is no matrix of numbers has NaN for
// eigenvalues.
template <class T>
void failing() {
    for (char uplo : {'U', 'L'})
        for (Interface where : {inHost, inDevice})
            for (bool definite : {false, true}) {
                auto a = Matrix<T>::random(9, 9), b = positiveDefinite<T>(9);
                (definite ? a : b)(5, 5) = scalar<T>(definite ? HUGE_VAL : -1);
                auto call = sygvdCall(1, 'V', uplo, a, b, where);
                EXPECT_EQ(Outcome(lumoDataError, definite ? 9 : 9 + 6), outcome(call->run()));
                call->look([&](auto, auto, auto, auto, auto& x, auto&, auto& w) {
                    EXPECT_EQ(!definite, x.untouched() && w.untouched());
                    for (auto value : w.now().data) EXPECT_EQ(definite, std::isnan(value));
                });
            }
}

const bool registered = forElementTypes([](auto element, const std::string& letter) {
    using T = decltype(element);
    registerRoutine(
        {letter + (lumo::isComplex<T> ? "hegvd" : "sygvd"),
         sygvdCases<T>({"1VU", "1VL", "2VU", "2VL", "3VU", "3VL", "1NU", "1NL", "2NU", "3NL"},
                       {{1, 0}, {3, 0}, {9, 0}, {30, 0}}, shrinkBlocks<T>) +
             sygvdCases<T>({"1VU", "2VL"}, {{200, 0}}),
         failing<T>, sygvdCases<T>({"1VU", "3VL"}, {{4, 0}}, shrinkBlocks<T>), isDouble<T>,
         shrinkBlocks<T>, true});
});

}  // namespace
}  // namespace test
