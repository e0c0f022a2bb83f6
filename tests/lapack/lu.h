// Calls of getrf and gesv, exported or, in double precision, internal.
#pragma once

#include <vector>

#include "lapack/frame.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/operands_call.h"
#include "lapack/tuning.h"
#include "residuals.h"

namespace test {

// Panels of 8 columns, and the transposed path from order 20 on.
template <class T>
std::shared_ptr<void> shrinkLu() {
    const lumo::GetrfTuning saved = lumo::getrfTuning<T>;
    lumo::getrfTuning<T> = {{4, 4}, 20};
    return std::shared_ptr<void>(nullptr, [saved](void*) { lumo::getrfTuning<T> = saved; });
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
          m_(operands[0].m),
          n_(operands[0].n),
          nrhs_(operands.back().n),
          lda_(operands[0].ld),
          ldb_(operands.back().ld),
          pivots_(blank<int>(std::min(m_, n_))) {
        // The pivots of getrf on the device lie there, those of gesv do not.
        if (interface == Interface::device && !solves_ && !isInternal)
            devicePivots_ = std::make_unique<OnDevice<int>>(pivots_);
    }

    bool untouched() override {
        const bool same = interface_ == Interface::device || pivots() == untouchedPivots();
        return same && OperandsCall<T>::untouched();
    }

    // A singular A: the factors are complete, and B is as it was.
    void checkSingular() {
        const auto& after = this->results();
        EXPECT_LT(luResidual(this->before()[0], after[0], pivots()), luBound);
        EXPECT_TRUE(!solves_ || after[1] == this->before()[1]);
    }

  private:
    static constexpr bool isInternal = std::is_same_v<RealOf<T>, double>;

    std::vector<int> untouchedPivots() const { return blank<int>(std::min(m_, n_)).data; }
    std::vector<int> pivots() const {
        return devicePivots_ ? devicePivots_->download().data : pivots_.data;
    }

    lumoStatus call(const std::vector<T*>& at) {
        const auto blocks = shrunk_ ? shrinkLu<T>() : nullptr;
        int* const ipiv = devicePivots_ ? devicePivots_->data() : pivots_.data.data();
        if constexpr (isInternal) {
            return lumo::computeFrame<T>(lumo::deviceCall, [&] {
                if (const int info = lumo::getrf(m_, n_, at[0], lda_, ipiv))
                    lumo::throwDataError(info);
                if (solves_) lumo::getrs('n', n_, nrhs_, at[0], lda_, ipiv, at[1], ldb_);
            });
        } else {
            const bool host = interface_ == Interface::host;
            if (!solves_)
                return (host ? byType<T>(lumoSgetrf, lumoCgetrf)
                             : byType<T>(lumoDeviceSgetrf, lumoDeviceCgetrf))(
                    m_, n_, exported(at[0]), lda_, ipiv);
            return (host ? byType<T>(lumoSgesv, lumoCgesv)
                         : byType<T>(lumoDeviceSgesv, lumoDeviceCgesv))(
                n_, nrhs_, exported(at[0]), lda_, ipiv, exported(at[1]), ldb_);
        }
    }

    void check(const std::vector<Matrix<T>>& before, const std::vector<Matrix<T>>& after) {
        const std::vector<int> ipiv = pivots();
        for (int i = 0; i < int(ipiv.size()); ++i) {
            ASSERT_GE(ipiv[i], i + 1);
            ASSERT_LE(ipiv[i], m_);
        }
        EXPECT_LT(luResidual(before[0], after[0], ipiv), luBound);
        if (solves_) {
            EXPECT_LT(solveResidual(before[0], after[1], before[1]), solveBound);
        }
    }

    const bool solves_, shrunk_;
    const Interface interface_;
    const int m_, n_, nrhs_, lda_, ldb_;
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
