// A call of a BLAS operation with operands of its own, for the harness.
#pragma once

#include <cstring>
#include <memory>

#include "blas/operations.h"
#include "blas/tuning.h"
#include "lapack/harness.h"
#include "runtime/letters.h"

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

template <class T>
bool sameBytes(const Matrix<T>& a, const Matrix<T>& b) {
    return a.data.size() == b.data.size() &&
           (a.data.empty() ||
            std::memcmp(a.data.data(), b.data.data(), a.data.size() * sizeof(T)) == 0);
}

// What must not be read is not a number: triangles and diagonals that are not stored, imaginary
// parts of real diagonals, and C where beta is zero.
template <class T>
class BlasCall : public Call {
  public:
    BlasCall(const Operation<T>& operation, const Problem& p, Interface where)
        : operation_(operation), problem_(p), letters_(p.letters), where_(where) {
        for (char& letter : letters_) letter = lumo::upper(letter);
        const Shapes s = operation.shapes(letters_, p.m, p.n, p.k);
        a_ = Matrix<T>::random(s.a.m, s.a.n, s.a.m + p.padding, 1);
        b_ = Matrix<T>::random(s.b.m, s.b.n, vectors() ? std::abs(p.incx) : s.b.m + p.padding, 2);
        c_ = Matrix<T>::random(s.c.m, s.c.n, vectors() ? std::abs(p.incy) : s.c.m + p.padding, 3);
        poisonA();
        if (triangleOfC() && operation.hermitian)
            for (int i = 0; i < c_.n; ++i) c_(i, i) = scalar<T>(wide(c_(i, i)).real());
        if (p.beta == 0.0 && !vectors() && operation.diagonalOfA < 0) poisonC();
        before_ = std::make_unique<Matrix<T>>(c_);
        if (where == inDevice) {
            deviceA_ = std::make_unique<OnDevice<T>>(a_);
            deviceB_ = std::make_unique<OnDevice<T>>(b_);
            deviceC_ = std::make_unique<OnDevice<T>>(c_);
        }
    }

    lumoStatus run() override {
        return where_ == inHost ? call(a_.data.data(), b_.data.data(), c_.data.data())
                                : call(deviceA_->data(), deviceB_->data(), deviceC_->data());
    }

    void checkResult() override {
        fetch();
        EXPECT_TRUE(c_.paddingUntouched());
        auto compared = [&](int i, int j) {
            return !triangleOfC() || inTriangle(triangleOfC(), i, j);
        };
        for (int j = 0; j < c_.n; ++j)
            for (int i = 0; i < c_.m; ++i)
                ASSERT_TRUE(compared(i, j) || c_(i, j) == (*before_)(i, j)) << i << ", " << j;
        const WideMatrix a(a_), b = counted(problem_.incx, b_);
        WideMatrix before = counted(problem_.incy, *before_), after = counted(problem_.incy, c_);
        Arguments<T> p = arguments();
        if (operation_.name == "trsm") {
            std::swap(before, after);
            for (Wide& x : after.data) x *= wide(p.alpha);
            p.alpha = T(1);
        }
        EXPECT_LT(operation_.sum(p, a, b, before).ratio(after, 2 * epsilon<T>, compared),
                  blasBound);
    }

    bool untouched() override {
        fetch();
        return sameBytes(c_, *before_);
    }
    bool hasNan() {
        fetch();
        return std::any_of(c_.data.begin(), c_.data.end(),
                           [](T x) { return std::isnan(wide(x).real()); });
    }

  private:
    bool vectors() const { return operation_.name == "gemv"; }
    char triangleOfC() const {
        return operation_.triangleOfC < 0 ? '\0' : letters_[operation_.triangleOfC];
    }

    Arguments<T> arguments() const {
        const Problem& p = problem_;
        const T alpha = scalar<T>(p.alpha.real(), p.alpha.imag());
        const T beta = scalar<T>(p.beta.real(), p.beta.imag());
        const int ldb = vectors() ? p.incx : b_.ld, ldc = vectors() ? p.incy : c_.ld;
        return {letters_, p.m, p.n, p.k, alpha, nullptr, a_.ld, nullptr, ldb, beta, nullptr, ldc};
    }

    // gemv wants pointers even to nothing.
    lumoStatus call(const T* a, const T* b, T* c) {
        Arguments<T> p = arguments();
        p.letters = problem_.letters;
        p.a = a || !vectors() ? a : &nothing_;
        p.b = b || !vectors() ? b : &nothing_;
        p.c = c || !vectors() ? c : &nothing_;
        return operation_.call(where_, p);
    }

    void poisonA() {
        if (operation_.triangleOfA < 0) return;
        const char uplo = letters_[operation_.triangleOfA];
        const bool unit = operation_.diagonalOfA >= 0 && letters_[operation_.diagonalOfA] == 'U';
        for (int j = 0; j < a_.n; ++j) {
            for (int i = 0; i < a_.m; ++i)
                if (!inTriangle(uplo, i, j) || (unit && i == j)) a_(i, j) = scalar<T>(notANumber);
            if (operation_.hermitian) a_(j, j) = scalar<T>(wide(a_(j, j)).real(), notANumber);
        }
    }
    void poisonC() {
        for (int j = 0; j < c_.n; ++j)
            for (int i = 0; i < c_.m; ++i)
                if (!triangleOfC() || inTriangle(triangleOfC(), i, j))
                    c_(i, j) = scalar<T>(notANumber, notANumber);
    }

    void fetch() {
        if (deviceC_) c_ = deviceC_->download();
    }

    // A vector with a negative increment counts from its end in memory.
    WideMatrix counted(int increment, const Matrix<T>& x) const {
        WideMatrix w(x);
        if (vectors() && increment < 0) std::reverse(w.data.begin(), w.data.end());
        return w;
    }

    const Operation<T> operation_;
    const Problem problem_;
    std::string letters_;
    const Interface where_;
    Matrix<T> a_{0, 0}, b_{0, 0}, c_{0, 0};
    std::unique_ptr<Matrix<T>> before_;
    std::unique_ptr<OnDevice<T>> deviceA_, deviceB_, deviceC_;
    T nothing_{};
};

template <class T>
std::unique_ptr<BlasCall<T>> blasCall(const std::string& name, const Problem& p, Interface where) {
    return std::make_unique<BlasCall<T>>(operation<T>(name), p, where);
}

}  // namespace test
