// A call of a BLAS operation with operands of its own, for the harness.
#pragma once

#include <memory>

#include "blas/operations.h"
#include "blas/tuning.h"
#include "common/letters.h"
#include "support/harness.h"

namespace test {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Symmetric operations from size 8 on go by blocks of 3.
inline std::shared_ptr<void> shrinkBlas() {
    lumo::BlasTuning small = lumo::blasTuning;
    small.unblocked = 7;
    small.block = 3;
    return temporarily(lumo::blasTuning, small);
}

struct Problem {
    std::string letters;
    int m, n, k;
    Wide alpha{1}, beta{0};
    int padding = 0;         // of every leading dimension
    int incx = 1, incy = 1;  // for gemv
};

// What must not be read is not a number: triangles and diagonals that are not stored, imaginary
// parts of real diagonals, and C where beta is zero.
template <class T>
class BlasCall : public Call {
  public:
    // Blocked: with small blocks, so that it goes by several.
    BlasCall(const Operation<T>& operation, const Problem& p, Interface where, bool blocked = false)
        : operation_(operation),
          problem_(p),
          letters_(upper(p.letters)),
          where_(where),
          blocked_(blocked),
          shapes_(operation.shapes(letters_, p.m, p.n, p.k)),
          a_(readA(), where),
          b_(operand(shapes_.b, p.incx, 2), where),
          c_(writtenC(), where) {}

    // gemv wants pointers even to nothing.
    lumoStatus run() override {
        const auto blocks = blocked_ ? shrinkBlas() : nullptr;
        Arguments<T> p = arguments();
        p.letters = problem_.letters;
        auto at = [&](Operand<T>& x) { return x.at() || !vectors() ? x.at() : &nothing_; };
        std::tie(p.a, p.b, p.c) = std::tuple(at(a_), at(b_), at(c_));
        return operation_.call(where_, p);
    }

    void checkResult() override {
        EXPECT_TRUE(a_.untouched() && b_.untouched() && c_.paddingUntouched());
        const Matrix<T> now = c_.now();
        for (int j = 0; j < now.n; ++j)
            for (int i = 0; i < now.m; ++i)
                ASSERT_TRUE(isResult(i, j) || now(i, j) == c_.before(i, j)) << i << ", " << j;
        const WideMatrix a(a_.before), b = counted(problem_.incx, b_.before);
        WideMatrix before = counted(problem_.incy, c_.before), after = counted(problem_.incy, now);
        Arguments<T> p = arguments();
        if (operation_.name == "trsm") {
            std::swap(before, after);
            for (Wide& x : after.data) x *= wide(p.alpha);
            p.alpha = T(1);
        }
        const auto compared = [&](int i, int j) { return isResult(i, j); };
        EXPECT_LT(operation_.sum(p, a, b, before).ratio(after, 2 * epsilon<T>, compared),
                  blasBound);
    }

    bool untouched() override { return a_.untouched() && b_.untouched() && c_.untouched(); }

  private:
    static std::string upper(std::string letters) {
        for (char& letter : letters) letter = lumo::upper(letter);
        return letters;
    }
    bool vectors() const { return operation_.name == "gemv"; }
    bool isResult(int i, int j) const {
        return operation_.triangleOfC < 0 || inTriangle(letters_[operation_.triangleOfC], i, j);
    }

    Arguments<T> arguments() const {
        const Problem& p = problem_;
        const T alpha = scalar<T>(p.alpha.real(), p.alpha.imag());
        const T beta = scalar<T>(p.beta.real(), p.beta.imag());
        const int ldb = vectors() ? p.incx : b_.before.ld, ldc = vectors() ? p.incy : c_.before.ld;
        return {letters_,     p.m,     p.n, p.k,  alpha,   nullptr,
                a_.before.ld, nullptr, ldb, beta, nullptr, ldc};
    }

    Matrix<T> operand(Shape s, int increment, unsigned seed) const {
        const int ld = vectors() ? std::abs(increment) : s.m + problem_.padding;
        return Matrix<T>::random(s.m, s.n, ld, seed);
    }
    Matrix<T> readA() const {
        auto a = Matrix<T>::random(shapes_.a.m, shapes_.a.n, shapes_.a.m + problem_.padding, 1);
        if (operation_.triangleOfA < 0) return a;
        const char uplo = letters_[operation_.triangleOfA];
        const bool unit = operation_.diagonalOfA >= 0 && letters_[operation_.diagonalOfA] == 'U';
        for (int j = 0; j < a.n; ++j) {
            for (int i = 0; i < a.m; ++i)
                if (!inTriangle(uplo, i, j) || (unit && i == j)) a(i, j) = scalar<T>(notANumber);
            if (operation_.hermitian) a(j, j) = scalar<T>(wide(a(j, j)).real(), notANumber);
        }
        return a;
    }
    Matrix<T> writtenC() const {
        auto c = operand(shapes_.c, problem_.incy, 3);
        const bool unread = problem_.beta == 0.0 && !vectors() && operation_.scalars == 2;
        for (int j = 0; j < c.n; ++j) {
            if (operation_.triangleOfC >= 0 && operation_.hermitian)
                c(j, j) = scalar<T>(wide(c(j, j)).real());
            for (int i = 0; i < c.m; ++i)
                if (unread && isResult(i, j)) c(i, j) = scalar<T>(notANumber, notANumber);
        }
        return c;
    }

    // A vector with a negative increment counts from its end in memory.
    WideMatrix counted(int increment, const Matrix<T>& x) const {
        WideMatrix w(x);
        if (vectors() && increment < 0) std::reverse(w.data.begin(), w.data.end());
        return w;
    }

    const Operation<T> operation_;
    const Problem problem_;
    const std::string letters_;
    const Interface where_;
    const bool blocked_;
    const Shapes shapes_;
    Operand<T> a_, b_, c_;
    T nothing_{};
};

template <class T>
std::unique_ptr<BlasCall<T>> blasCall(const std::string& name, const Problem& p, Interface where) {
    return std::make_unique<BlasCall<T>>(operation<T>(name), p, where);
}

}  // namespace test
