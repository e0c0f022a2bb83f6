#include "lapack/gelsd.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/ScaleRows/ScaleRows.h"
#include "basic/Transpose/Transpose.h"
#include "blas/gemm.h"
#include "common/exceptions.h"
#include "lapack/bdsdc.h"
#include "lapack/bdsqr_scalars.h"
#include "lapack/long_bidiagonal.h"
#include "lapack/norm_scaling.h"
#include "routine/exports.h"

namespace lumo {
namespace {

template <class T>
class MinimumNorm {
    using R = RealOf<T>;

  public:
    explicit MinimumNorm(const Gelsd<T>& r)
        : r_(r), k_(std::min(r.m, r.n)), values_(std::size_t(k_)) {}

    void run() {
        const R norm = largestElement(r_.m, r_.n, r_.a, r_.lda);
        const R least = safeMinimum<R> / (2 * roundingUnit<R>);
        if (!std::isfinite(norm)) return refuse();
        if (norm == 0) {
            std::fill(values_.begin(), values_.end(), R(0));
            LASET('A', std::max(r_.m, r_.n), r_.nrhs, T(0), T(0), r_.b, r_.ldb);
            return finish(0);
        }
        const R ofA = scaleFor(norm, least), ofB = scaleFor(normOfB(), least);
        multiplyMatrix(ofA, r_.m, r_.n, r_.a, r_.lda);
        multiplyMatrix(ofB, r_.m, r_.nrhs, r_.b, r_.ldb);
        const int rank = solve();
        multiplyMatrix(ofA, r_.n, r_.nrhs, r_.b, r_.ldb);
        multiplyMatrix(1 / ofB, r_.n, r_.nrhs, r_.b, r_.ldb);
        for (R& x : values_) x /= ofA;
        finish(rank);
    }

  private:
    [[noreturn]] void refuse() {
        std::fill(values_.begin(), values_.end(), std::numeric_limits<R>::quiet_NaN());
        finish(0);
        throwDataError(k_);
    }
    void finish(int rank) const {
        cudalib::checkCudaError(
            cudaMemcpy(r_.s, values_.data(), values_.size() * sizeof(R), cudaMemcpyHostToDevice));
        *r_.rank = rank;
    }
    R normOfB() const { return r_.nrhs > 0 ? largestElement(r_.m, r_.nrhs, r_.b, r_.ldb) : R(0); }

    // A = Q B P^H, or of a wide matrix A^H.
    int solve() {
        const bool isLong = r_.m >= r_.n;
        cudalib::Workspace<T> mirrored(isLong ? 0 : std::size_t(r_.n) * std::size_t(r_.m));
        if (!isLong)
            transpose(mirrored.data(), std::size_t(r_.n), r_.a, std::size_t(r_.lda),
                      std::size_t(r_.m), std::size_t(r_.n), isComplex<T>);
        std::vector<R> e;
        const LongBidiagonal<T> bidiagonal(std::max(r_.m, r_.n), k_,
                                           isLong ? r_.a : mirrored.data(), isLong ? r_.lda : r_.n,
                                           values_.data(), e);
        const Numbers u(square()), v(square());
        bdsdc(k_, values_.data(), e.data(), u.data(), k_, v.data(), k_);
        const int rank = rankOf();
        if (r_.nrhs == 0) return rank;
        if (isLong) {
            bidiagonal.applyQ('C', r_.nrhs, r_.b, r_.ldb);
            divide(bidiagonal, u, v, rank);
            bidiagonal.applyP('N', r_.nrhs, r_.b, r_.ldb);
        } else {
            bidiagonal.applyP('C', r_.nrhs, r_.b, r_.ldb);
            divide(bidiagonal, v, u, rank);
            LASET('A', r_.n - r_.m, r_.nrhs, T(0), T(0), r_.b + r_.m, r_.ldb);
            bidiagonal.applyQ('N', r_.nrhs, r_.b, r_.ldb);
        }
        return rank;
    }

    // Values up to rcond times the largest count as zero.
    int rankOf() const {
        const R relative = r_.rcond >= 0 ? r_.rcond : roundingUnit<R>;
        const R threshold = std::max(relative * values_[0], safeMinimum<R>);
        int rank = 0;
        while (rank < k_ && values_[rank] > threshold) ++rank;
        return rank;
    }

    // The first k rows of B become X S^+ Y^T times themselves.
    using Numbers = cudalib::Workspace<R>;
    void divide(const LongBidiagonal<T>& bidiagonal, const Numbers& y, const Numbers& x,
                int rank) const {
        std::vector<R> inverse(std::size_t(k_), R(0));
        for (int i = 0; i < rank; ++i) inverse[i] = 1 / values_[i];
        const Numbers factors(inverse.size());
        cudalib::checkCudaError(cudaMemcpy(factors.data(), inverse.data(),
                                           inverse.size() * sizeof(R), cudaMemcpyHostToDevice));
        const cudalib::Workspace<T> vectors(square()),
            products(std::size_t(k_) * std::size_t(r_.nrhs));
        bidiagonal.place(y.data(), vectors.data(), k_);
        gemm('C', 'N', k_, r_.nrhs, k_, T(1), vectors.data(), k_, r_.b, r_.ldb, T(0),
             products.data(), k_);
        scaleRows(k_, r_.nrhs, factors.data(), products.data(), k_);
        bidiagonal.place(x.data(), vectors.data(), k_);
        gemm('N', 'N', k_, r_.nrhs, k_, T(1), vectors.data(), k_, products.data(), k_, T(0), r_.b,
             r_.ldb);
    }
    std::size_t square() const { return std::size_t(k_) * std::size_t(k_); }

    const Gelsd<T>& r_;
    const int k_;
    std::vector<R> values_;
};

}  // namespace

template <class T>
void Gelsd<T>::run() const {
    if (std::min(m, n) > 0) return MinimumNorm<T>(*this).run();
    LASET('A', std::max(m, n), nrhs, T(0), T(0), b, ldb);
    *rank = 0;
}

LUMO_INSTANTIATE_MEMBERS(Gelsd)
LUMO_EXPORT_S_D_C_Z(gelsd, Gelsd)

}  // namespace lumo
