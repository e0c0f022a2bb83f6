#include "lapack/dsgesv.h"

#include <cmath>
#include <limits>
#include <vector>

#include "basic/Copy/Copy.h"
#include "basic/Norms/Norms.h"
#include "basic/Precision/Precision.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/getrf.h"
#include "lapack/getrs.h"
#include "lapack/pivots.h"
#include "routine/exports.h"

namespace lumo {
namespace {

template <class T>
struct LowerPrecision;
template <>
struct LowerPrecision<double> {
    using Type = float;
};
template <>
struct LowerPrecision<Complex<double>> {
    using Type = Complex<float>;
};

// Why double precision had to do it all, as LAPACK's ITER tells it.
constexpr int tooLarge = -2, singular = -3, mostSteps = 30, notConverged = -mostSteps - 1;

// A is factorised in single precision, and X refined by R, the residual B - A X.
template <class T>
class Refinement {
  public:
    Refinement(const Dsgesv<T>& system, int* ipiv)
        : s_(system),
          ipiv_(ipiv),
          lowA_(elements(s_.n)),
          lowX_(elements(s_.nrhs)),
          r_(elements(s_.nrhs)),
          norms_(std::size_t(std::max(s_.n, 2 * s_.nrhs))),
          solve_(s_.n, s_.nrhs) {}

    // The steps that gave X, or why there is none. A and B stay as they are.
    int run() {
        rowSums(s_.n, s_.n, s_.a, s_.lda, norms_.data());
        const Real normOfA = largestNorm(0, s_.n);
        columnMaxima(s_.n, s_.nrhs, s_.b, s_.ldb, norms_.data());
        if (!(normOfA <= largestLow && largestNorm(0, s_.nrhs) <= largestLow)) return tooLarge;

        precisionConvert(s_.n, s_.n, s_.a, s_.lda, lowA_.data(), s_.n);
        if (getrf(s_.n, s_.n, lowA_.data(), s_.n, ipiv_)) return singular;
        solve(s_.b, s_.ldb, s_.x, s_.ldx);
        constexpr Real epsilon = std::numeric_limits<Real>::epsilon() / 2;
        const Real bound = normOfA * epsilon * std::sqrt(Real(s_.n));
        for (int step = 0;; ++step) {
            formResidual();
            if (converged(bound)) return step;
            if (step == mostSteps) return notConverged;
            if (!(largestNorm(s_.nrhs, s_.nrhs) <= largestLow)) return tooLarge;
            solve(r_.data(), s_.n, r_.data(), s_.n);
            for (int j = 0; j < s_.nrhs; ++j)
                cublas::axpy(s_.n, T(1), at(r_.data(), s_.n, 0, j), 1, at(s_.x, s_.ldx, 0, j), 1);
        }
    }

  private:
    using Real = RealOf<T>;
    using Low = typename LowerPrecision<T>::Type;
    static constexpr Real largestLow = std::numeric_limits<RealOf<Low>>::max();

    std::size_t elements(int columns) const { return std::size_t(s_.n) * std::size_t(columns); }

    // X := A^-1 B by the factors in single precision.
    void solve(const T* b, int ldb, T* x, int ldx) {
        precisionConvert(s_.n, s_.nrhs, b, ldb, lowX_.data(), s_.n);
        solve_.run(lowA_.data(), s_.n, ipiv_, lowX_.data(), s_.n);
        precisionConvert(s_.n, s_.nrhs, lowX_.data(), s_.n, x, ldx);
    }
    void formResidual() {
        copyMatrix(s_.n, s_.nrhs, s_.b, s_.ldb, r_.data(), s_.n);
        gemm('N', 'N', s_.n, s_.nrhs, s_.n, T(-1), s_.a, s_.lda, s_.x, s_.ldx, T(1), r_.data(),
             s_.n);
    }
    // LAPACK's criterion, for each right-hand side; never of what is not a number.
    bool converged(Real bound) {
        columnMaxima(s_.n, s_.nrhs, s_.x, s_.ldx, norms_.data());
        columnMaxima(s_.n, s_.nrhs, r_.data(), s_.n, norms_.data() + s_.nrhs);
        const std::vector<Real> largest = norms(0, 2 * s_.nrhs);
        for (std::size_t j = 0; j < largest.size() / 2; ++j)
            if (!(largest[largest.size() / 2 + j] <= largest[j] * bound)) return false;
        return true;
    }

    // What the kernels left.
    std::vector<Real> norms(int first, int count) const {
        std::vector<Real> values(static_cast<std::size_t>(count));
        cudalib::checkCudaError(cudaMemcpy(values.data(), norms_.data() + first,
                                           values.size() * sizeof(Real), cudaMemcpyDeviceToHost));
        return values;
    }
    // Not a number if one of them is not.
    Real largestNorm(int first, int count) const {
        Real largest = 0;
        for (Real norm : norms(first, count))
            if (!(norm <= largest)) largest = largest != largest ? largest : norm;
        return largest;
    }

    const Dsgesv<T>& s_;
    int* const ipiv_;
    const cudalib::Workspace<Low> lowA_, lowX_;
    const cudalib::Workspace<T> r_;
    const cudalib::Workspace<Real> norms_;
    const LuSolve<Low> solve_;
};

}  // namespace

template <class T>
void Dsgesv<T>::run() const {
    Pivots pivots(n);
    const int steps = n > 0 ? Refinement<T>(*this, pivots.data()).run() : 0;
    deliver({steps}, iter);
    if (steps >= 0) return pivots.deliver(ipiv);

    const LuSolve<T> solve(n, nrhs);
    const int zeroPivot = getrf(n, n, a, lda, pivots.data());
    pivots.deliver(ipiv);
    if (zeroPivot) throwDataError(zeroPivot);
    copyMatrix(n, nrhs, b, ldb, x, ldx);
    solve.run(a, lda, pivots.data(), x, ldx);
}

template struct Dsgesv<double>;
template struct Dsgesv<Complex<double>>;

[[gnu::used]] static void dsgesvExports() {
    LUMO_EXPORT(D, double, sgesv, Dsgesv);
    LUMO_EXPORT(Z, Complex<double>, cgesv, Dsgesv);
}

}  // namespace lumo
