// Calls of getrf and gesv, exported or, in double precision, internal.
#pragma once

#include <vector>

#include "lapack/frame.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/harness.h"
#include "lapack/operands_call.h"
#include "lapack/tuning.h"
#include "residuals.h"
#include "support/matrix.h"

namespace test {

template <class T>
struct LuExports;
template <>
struct LuExports<float> {
    static constexpr auto getrf = lumoSgetrf, deviceGetrf = lumoDeviceSgetrf;
    static constexpr auto gesv = lumoSgesv, deviceGesv = lumoDeviceSgesv;
};
template <>
struct LuExports<lumo::Complex<float>> {
    static constexpr auto getrf = lumoCgetrf, deviceGetrf = lumoDeviceCgetrf;
    static constexpr auto gesv = lumoCgesv, deviceGesv = lumoDeviceCgesv;
};

// Panels of 8 columns, and the transposed path from order 20 on.
template <class T>
std::shared_ptr<void> shrinkLu() {
    const lumo::GetrfTuning saved = lumo::getrfTuning<T>;
    lumo::getrfTuning<T> = {{4, 4}, 20};
    return std::shared_ptr<void>(nullptr, [saved](void*) { lumo::getrfTuning<T> = saved; });
}

// A vector of pivots in device memory.
class DevicePivots {
  public:
    explicit DevicePivots(int count) : memory_({unsigned(count), 1}) {}
    int* data() const { return memory_.data(); }
    std::vector<int> download() const {
        std::vector<int> ipiv(memory_.rows());
        memory_.copyToHost(ipiv.data(), ipiv.size());
        return ipiv;
    }

  private:
    cudalib::ManagedMemory<int, cudalib::CudaAllocator> memory_;
};

constexpr int untouchedPivot = -123;

template <class T>
class GetrfCall : public Call {
  public:
    GetrfCall(Matrix<T> a, Interface interface)
        : original_(std::move(a)),
          a_(original_),
          ipiv_(std::size_t(std::min(a_.m, a_.n)), untouchedPivot),
          interface_(interface) {
        if (interface == Interface::device) {
            onDevice_ = std::make_unique<OnDevice<T>>(a_);
            devicePivots_ = std::make_unique<DevicePivots>(int(ipiv_.size()));
        }
    }

    lumoStatus run() override {
        using namespace lumo;
        const int m = a_.m, n = a_.n;
        if constexpr (std::is_same_v<RealOf<T>, double>) {
            return computeFrame<T>(deviceCall, [&] {
                if (const int info = getrf(m, n, onDevice_->data(), a_.ld, ipiv_.data()))
                    throwDataError(info);
            });
        } else if (interface_ == Interface::host) {
            return LuExports<T>::getrf(m, n, exported(a_.data.data()), a_.ld, ipiv_.data());
        } else {
            return LuExports<T>::deviceGetrf(m, n, exported(onDevice_->data()), a_.ld,
                                             devicePivots_->data());
        }
    }

    void checkResult() override {
        fetch();
        for (int i = 0; i < int(ipiv_.size()); ++i) {
            ASSERT_GE(ipiv_[i], i + 1);
            ASSERT_LE(ipiv_[i], a_.m);
        }
        EXPECT_LT(luResidual(original_, a_, ipiv_), luBound);
        EXPECT_TRUE(a_.paddingUntouched());
    }

    bool resultHasNan() {
        fetch();
        return std::any_of(a_.data.begin(), a_.data.end(),
                           [](T x) { return std::isnan(wide(x).real()); });
    }

    bool untouched() override {
        if (onDevice_) return onDevice_->download() == original_;
        const bool pivots =
            std::all_of(ipiv_.begin(), ipiv_.end(), [](int p) { return p == untouchedPivot; });
        return pivots && a_ == original_;
    }

  private:
    void fetch() {
        if (!onDevice_) return;
        a_ = onDevice_->download();
        if constexpr (!std::is_same_v<RealOf<T>, double>) ipiv_ = devicePivots_->download();
    }

    const Matrix<T> original_;
    Matrix<T> a_;
    std::vector<int> ipiv_;
    Interface interface_;
    std::unique_ptr<OnDevice<T>> onDevice_;
    std::unique_ptr<DevicePivots> devicePivots_;
};

template <class T>
class GesvCall : public Call {
  public:
    GesvCall(Matrix<T> a, Matrix<T> b, Interface interface)
        : originalA_(std::move(a)),
          originalB_(std::move(b)),
          a_(originalA_),
          b_(originalB_),
          ipiv_(std::size_t(a_.n), untouchedPivot) {
        if (interface == Interface::device) {
            deviceA_ = std::make_unique<OnDevice<T>>(a_);
            deviceB_ = std::make_unique<OnDevice<T>>(b_);
        }
    }

    // The device interface gets its pivots in host memory here, in device memory in GetrfCall.
    lumoStatus run() override {
        using namespace lumo;
        const int n = a_.n, nrhs = b_.n;
        if constexpr (std::is_same_v<RealOf<T>, double>) {
            return computeFrame<T>(deviceCall, [&] {
                if (const int info = getrf(n, n, deviceA_->data(), a_.ld, ipiv_.data()))
                    throwDataError(info);
                getrs('n', n, nrhs, deviceA_->data(), a_.ld, ipiv_.data(), deviceB_->data(), b_.ld);
            });
        } else if (!deviceA_) {
            return LuExports<T>::gesv(n, nrhs, exported(a_.data.data()), a_.ld, ipiv_.data(),
                                      exported(b_.data.data()), b_.ld);
        } else {
            return LuExports<T>::deviceGesv(n, nrhs, exported(deviceA_->data()), a_.ld,
                                            ipiv_.data(), exported(deviceB_->data()), b_.ld);
        }
    }

    void checkResult() override {
        fetch();
        EXPECT_LT(luResidual(originalA_, a_, ipiv_), luBound);
        EXPECT_LT(solveResidual(originalA_, b_, originalB_), solveBound);
        EXPECT_TRUE(a_.paddingUntouched() && b_.paddingUntouched());
    }

    // A singular A: the factors are complete, B is as it was.
    void checkSingular() {
        fetch();
        EXPECT_LT(luResidual(originalA_, a_, ipiv_), luBound);
        EXPECT_TRUE(b_ == originalB_);
    }

    bool untouched() override {
        if (deviceA_)
            return deviceA_->download() == originalA_ && deviceB_->download() == originalB_;
        const bool pivots =
            std::all_of(ipiv_.begin(), ipiv_.end(), [](int p) { return p == untouchedPivot; });
        return pivots && a_ == originalA_ && b_ == originalB_;
    }

  private:
    void fetch() {
        if (!deviceA_) return;
        a_ = deviceA_->download();
        b_ = deviceB_->download();
    }

    const Matrix<T> originalA_, originalB_;
    Matrix<T> a_, b_;
    std::vector<int> ipiv_;
    std::unique_ptr<OnDevice<T>> deviceA_, deviceB_;
};

template <class T>
std::unique_ptr<GetrfCall<T>> getrfCall(int m, int n, int ld, Interface interface) {
    return std::make_unique<GetrfCall<T>>(Matrix<T>::random(m, n, ld), interface);
}

template <class T>
std::unique_ptr<GesvCall<T>> gesvCall(int n, int nrhs, int pad, Interface interface) {
    return std::make_unique<GesvCall<T>>(Matrix<T>::random(n, n, n + pad),
                                         Matrix<T>::random(n, nrhs, n + 2 * pad, 2), interface);
}

}  // namespace test
