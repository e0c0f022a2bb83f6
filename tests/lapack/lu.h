// Calls of getrf and gesv, exported or, in double precision, internal.
#pragma once

#include <vector>

#include "lapack/gesv.h"
#include "lapack/getrf.h"
#include "lapack/operands_call.h"
#include "lapack/tuning.h"
#include "residuals.h"

namespace test {

// Panels of 8 columns, and the transposed path from order 20 on.
template <class T>
std::shared_ptr<void> shrinkLu() {
    return temporarily(lumo::getrfTuning<T>, {{4, 4}, 20});
}

// gesv of A and B or, where there is no B, getrf of A.
template <class T>
class LuCall : public OperandsCall<T> {
  public:
    LuCall(std::vector<Matrix<T>> operands, Interface interface, bool shrunk)
        : OperandsCall<T>(
              operands, interface, [this](Interface, const auto& at) { return call(at); },
              [this](const auto& before, const auto& after) { check(before, after); }),
          solves_(operands.size() > 1),
          shrunk_(shrunk),
          interface_(interface),
          pivots_(blank<int>(std::min(operands[0].m, operands[0].n))) {
        // The pivots of getrf on the device lie there, those of gesv do not.
        if (interface == inDevice && !solves_ && !isDouble<T>)
            devicePivots_ = std::make_unique<OnDevice<int>>(pivots_);
    }

    bool untouched() override {
        const bool same = interface_ == inDevice || pivots() == blank<int>(pivots_.m).data;
        return same && OperandsCall<T>::untouched();
    }

    // A singular A: the factors are complete, and B is as it was.
    void checkSingular() {
        const auto& after = this->results();
        EXPECT_LT(luResidual(this->before()[0], after[0], pivots()), luBound);
        EXPECT_TRUE(!solves_ || after[1] == this->before()[1]);
    }

  private:
    std::vector<int> pivots() const {
        return devicePivots_ ? devicePivots_->download().data : pivots_.data;
    }

    lumoStatus call(const std::vector<T*>& at) {
        const auto blocks = shrunk_ ? shrinkLu<T>() : nullptr;
        int* const ipiv = devicePivots_ ? devicePivots_->data() : pivots_.data.data();
        const Matrix<T>& a = this->before().front();
        const Matrix<T>& b = this->before().back();
        if (!solves_)
            return callRoutine<lumo::Getrf<T>>(
                interface_, [](auto e) { return e.getrf; }, a.m, a.n, at[0], a.ld, ipiv);
        return callRoutine<lumo::Gesv<T>>(
            interface_, [](auto e) { return e.gesv; }, a.n, b.n, at[0], a.ld, ipiv, at[1], b.ld);
    }

    void check(const std::vector<Matrix<T>>& before, const std::vector<Matrix<T>>& after) {
        const std::vector<int> ipiv = pivots();
        for (int i = 0; i < int(ipiv.size()); ++i) {
            ASSERT_GE(ipiv[i], i + 1);
            ASSERT_LE(ipiv[i], before[0].m);
        }
        EXPECT_LT(luResidual(before[0], after[0], ipiv), luBound);
        if (solves_) {
            EXPECT_LT(solveResidual(before[0], after[1], before[1]), solveBound);
        }
    }

    const bool solves_, shrunk_;
    const Interface interface_;
    Matrix<int> pivots_;
    std::unique_ptr<OnDevice<int>> devicePivots_;
};

template <class T>
std::unique_ptr<LuCall<T>> luCall(std::vector<Matrix<T>> operands, Interface interface,
                                  bool shrunk = false) {
    return std::make_unique<LuCall<T>>(std::move(operands), interface, shrunk);
}

template <class T>
std::unique_ptr<LuCall<T>> getrfCall(int m, int n, int ld, Interface interface,
                                     bool shrunk = false) {
    return luCall<T>({Matrix<T>::random(m, n, ld)}, interface, shrunk);
}

template <class T>
std::unique_ptr<LuCall<T>> gesvCall(int n, int nrhs, int pad, Interface interface,
                                    bool shrunk = false) {
    return luCall<T>({Matrix<T>::random(n, n, n + pad), Matrix<T>::random(n, nrhs, n + 2 * pad, 2)},
                     interface, shrunk);
}

}  // namespace test
