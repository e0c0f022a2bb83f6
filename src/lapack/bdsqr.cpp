#include "lapack/bdsqr.h"

#include <vector>

#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "lapack/bdsqr_vectors.h"
#include "lapack/dqds.h"
#include "lapack/stebz.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

void check(char uplo, int n, int ncvt, int nru, int ncc, int ldvt, int ldu, int ldc) {
    const int full = std::max(1, n);
    if (!isOneOf(uplo, "UL")) throwArgumentError(-1);
    if (n < 0) throwArgumentError(-2);
    if (ncvt < 0) throwArgumentError(-3);
    if (nru < 0) throwArgumentError(-4);
    if (ncc < 0) throwArgumentError(-5);
    if (ldvt < (ncvt > 0 ? full : 1)) throwArgumentError(-9);
    if (ldu < std::max(1, nru)) throwArgumentError(-11);
    if (ldc < (ncc > 0 ? full : 1)) throwArgumentError(-13);
}

// A device vector's copy on the host, for the time that the host works with it.
template <class Real>
class OnHost {
  public:
    OnHost(Real* device, int count) : device_(device), values_(std::size_t(count)) {
        copy(values_.data(), device_, cudaMemcpyDeviceToHost);
    }
    void copyBack() const { copy(device_, values_.data(), cudaMemcpyHostToDevice); }
    std::vector<Real>& values() { return values_; }
    bool finite() const {
        return std::all_of(values_.begin(), values_.end(), [](Real x) { return std::isfinite(x); });
    }

  private:
    void copy(Real* to, const Real* from, cudaMemcpyKind kind) const {
        if (!values_.empty())
            cudalib::checkCudaError(cudaMemcpy(to, from, values_.size() * sizeof(Real), kind));
    }

    Real* const device_;
    std::vector<Real> values_;
};

// From lower to upper bidiagonal form by rotations from the left.
template <class T>
void makeUpper(int n, RealOf<T>* d, RealOf<T>* e, SingularVectors<T>& vectors) {
    if (n < 2) return;
    const Sweep<RealOf<T>> sweep = vectors.stageLeft(n - 1, 0, 'F');
    for (int i = 0; i < n - 1; ++i) {
        const auto [c, s, r] = lartg(d[i], e[i]);
        d[i] = r;
        e[i] = s * d[i + 1];
        d[i + 1] = c * d[i + 1];
        sweep.left.set(i, c, s);
    }
    vectors.apply(sweep, n - 1, 0, 'F');
}

}  // namespace

template <class T>
void bdsqr(char uplo, int n, int ncvt, int nru, int ncc, RealOf<T>* d, RealOf<T>* e, T* vt,
           int ldvt, T* u, int ldu, T* c, int ldc) {
    using Real = RealOf<T>;
    uplo = upper(uplo);
    check(uplo, n, ncvt, nru, ncc, ldvt, ldu, ldc);
    if (n == 0) return;

    OnHost<Real> diagonal(d, n), off(e, n - 1);
    std::vector<Real>&ds = diagonal.values(), &es = off.values();
    if (!diagonal.finite() || !off.finite()) {
        std::fill(ds.begin(), ds.end(), std::numeric_limits<Real>::quiet_NaN());
        diagonal.copyBack();
        throwDataError(std::max(1, int(n - 1 - std::count(es.begin(), es.end(), Real(0)))));
    }

    const std::int64_t maxSteps = std::int64_t(bdsqrTuning<T>.stepsPerSquare) * n * n;
    const bool valuesOnly = ncvt == 0 && nru == 0 && ncc == 0;
    int unconverged = 0;
    const bool byDevice = valuesOnly && !platform::sharesMemory() && deviceIsModern() &&
                          bidiagonalStebz(n, ds.data(), es.data());
    if (!byDevice && !(valuesOnly && dqds(n, ds.data(), es.data(), maxSteps))) {
        SingularVectors<T> vectors(n, {vt, ldvt, ncvt}, {u, ldu, nru}, {c, ldc, ncc});
        vectors.turn();
        if (uplo == 'L') makeUpper(n, ds.data(), es.data(), vectors);
        unconverged = BidiagonalIteration(n, ds.data(), es.data(), vectors, maxSteps).run();
        vectors.turnBack();
    }
    diagonal.copyBack();
    off.copyBack();
    if (unconverged) throwDataError(unconverged);
}

LUMO_INSTANTIATE(bdsqr)

}  // namespace lumo
