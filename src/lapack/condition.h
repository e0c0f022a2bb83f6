// The reciprocal condition number of a matrix that systems can be solved with.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include "common/complex.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// The 1-norm of a matrix B of order n, from products of it and its conjugate transpose with vectors
// (Higham, ACM TOMS 14, 1988; LAPACK xLACN2): a lower bound, rarely much too small.
// apply(adjoint, x) overwrites a vector on the device by B x or B^H x. Vectors are multiplied by
// `scale`, and so is the norm.
template <class T, class Apply>
class NormEstimation {
  public:
    using Real = RealOf<T>;

    NormEstimation(int n, Real scale, Apply apply)
        : n_(std::size_t(n)), scale_(scale), apply_(apply), x_(n_), device_(n_) {}

    Real run() {
        std::fill(x_.begin(), x_.end(), T(scale_ / Real(n_)));
        Real norm = product();
        if (n_ == 1) return norm;
        std::size_t j = n_;
        for (int step = 0; step < mostSteps && takeSigns(); ++step) {
            // The gradient of || B x || names the unit vector that is stretched most.
            apply(true);
            const std::size_t best = largest();
            if (j < n_ && modulus(x_[j]) == modulus(x_[best])) break;
            j = best;
            std::fill(x_.begin(), x_.end(), T(0));
            x_[j] = T(scale_);
            const Real before = norm;
            norm = product();
            if (!(norm > before)) {
                norm = before;
                break;
            }
        }
        // What the steps cannot see because terms cancel.
        for (std::size_t i = 0; i < n_; ++i)
            x_[i] = T((i % 2 ? -scale_ : scale_) * (1 + Real(i) / Real(n_ - 1)));
        const Real other = 2 * product() / (3 * Real(n_));
        return other > norm ? other : norm;
    }

  private:
    static constexpr int mostSteps = 4;

    static Real modulus(T x) {
        if constexpr (isComplex<T>)
            return std::abs(std::complex<Real>(x.re, x.im));
        else
            return std::abs(x);
    }

    void apply(bool adjoint) {
        const std::size_t bytes = n_ * sizeof(T);
        cudalib::checkCudaError(
            cudaMemcpy(device_.data(), x_.data(), bytes, cudaMemcpyHostToDevice));
        apply_(adjoint, device_.data());
        cudalib::checkCudaError(
            cudaMemcpy(x_.data(), device_.data(), bytes, cudaMemcpyDeviceToHost));
    }
    // x := B x; its 1-norm.
    Real product() {
        apply(false);
        Real sum = 0;
        for (T x : x_) sum += modulus(x);
        return sum;
    }
    std::size_t largest() const {
        const auto less = [](T a, T b) { return modulus(a) < modulus(b); };
        return std::size_t(std::max_element(x_.begin(), x_.end(), less) - x_.begin());
    }
    // x := x(i) / |x(i)|. Whether that is news: of real vectors there are few.
    bool takeSigns() {
        bool news = isComplex<T> || signs_.empty();
        signs_.resize(n_, T(0));
        for (std::size_t i = 0; i < n_; ++i) {
            const Real length = modulus(x_[i]);
            T sign(1);
            if constexpr (isComplex<T>) {
                if (length > 0) sign = T(x_[i].re / length, x_[i].im / length);
            } else {
                sign = x_[i] < 0 ? T(-1) : T(1);
                news = news || sign != signs_[i];
            }
            signs_[i] = sign;
            x_[i] = scale_ * sign;
        }
        return news;
    }

    const std::size_t n_;
    const Real scale_;
    const Apply apply_;
    std::vector<T> x_, signs_;
    const cudalib::Workspace<T> device_;
};

// 1 / (norm || A^-1 ||), where solve(adjoint, x) overwrites a vector on the device by A^-1 x or
// A^-H x: 1 for a matrix without elements, 0 where a solution is infinite or not a number.
template <class T, class Solve>
RealOf<T> reciprocalCondition(int n, RealOf<T> norm, Solve solve) {
    if (n == 0) return 1;
    if (norm == 0 || !std::isfinite(norm)) return 0;
    const RealOf<T> condition = NormEstimation<T, Solve>(n, norm, solve).run();
    return condition > 0 && std::isfinite(condition) ? 1 / condition : 0;
}

}  // namespace lumo
