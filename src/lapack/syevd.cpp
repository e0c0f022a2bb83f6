#include "lapack/syevd.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/Transpose/Transpose.h"
#include "basic/magnitude.h"
#include "blas/cublas.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/apply_q.h"
#include "lapack/bdsqr_scalars.h"
#include "lapack/host_lapack.h"
#include "lapack/norm_scaling.h"
#include "lapack/stebz.h"
#include "lapack/stedc.h"
#include "lapack/sytrd.h"
#include "lapack/tuning.h"
#include "routine/exports.h"

namespace lumo {
namespace {

template <class T>
class SymmetricEigenproblem {
    using R = RealOf<T>;

  public:
    SymmetricEigenproblem(char uplo, int n, T* a, int lda, R* w)
        : upper_(uplo == 'U'), n_(n), a_{a, lda}, w_(w), values_(std::size_t(n)) {}

    void run(bool vectors) {
        // All works on the lower triangle.
        if (upper_) transposeInplace(a_.data, std::size_t(a_.ld), std::size_t(n_), isComplex<T>);
        const R norm = largest();
        const R scale = scaleFor(norm, std::sqrt(safeMinimum<R> / (2 * roundingUnit<R>)));
        if (scale != 1) multiplyTriangle(scale);
        try {
            if (!std::isfinite(norm)) refuse();
            if (vectors)
                decompose();
            else
                findValues();
        } catch (const InfoException& e) {
            if (e.info() < 1) throw;
            failure_ = e;
        }
        if (upper_ && !vectors)
            transposeInplace(a_.data, std::size_t(a_.ld), std::size_t(n_), isComplex<T>);
        if (scale != 1)
            for (R& x : values_) x /= scale;
        copy(w_, values_.data(), n_, cudaMemcpyHostToDevice);
        if (failure_) throw *failure_;
    }

  private:
    static void copy(R* to, const R* from, int count, cudaMemcpyKind kind) {
        if (count > 0)
            cudalib::checkCudaError(cudaMemcpy(to, from, std::size_t(count) * sizeof(R), kind));
    }

    [[noreturn]] void refuse() {
        std::fill(values_.begin(), values_.end(), std::numeric_limits<R>::quiet_NaN());
        throwDataError(n_);
    }

    // The largest element, or what is no number.
    R largest() {
        hermitianMaxima(n_, a_.data, a_.ld, w_);
        return largestOf(n_, w_);
    }
    void multiplyTriangle(R factor) const {
        for (int j = 0; j < n_; ++j) cublas::scal(n_ - j, T(factor), a_.at(j, j), 1);
    }

    // T's diagonals to values_ and off.
    void reduce(T* tau, std::vector<R>& off) {
        const cudalib::Workspace<R> e(std::size_t(n_ - 1));
        sytrd(n_, a_.data, a_.ld, w_, e.data(), tau);
        cudalib::synchronizeAndCheck();  // iterations are for matrices that there are
        copy(values_.data(), w_, n_, cudaMemcpyDeviceToHost);
        copy(off.data(), e.data(), n_ - 1, cudaMemcpyDeviceToHost);
    }

    void findValues() {
        const cudalib::Workspace<T> tau(std::size_t(n_ - 1));
        std::vector<R> off(std::size_t(n_ - 1));
        reduce(tau.data(), off);
        if (platform::sharesMemory())
            checkReturnedInfo(host::sterf(n_, values_.data(), off.data()));
        else
            stebz(n_, values_.data(), off.data(), 0, n_, values_.data());
    }

    void decompose() {
        const std::size_t square = std::size_t(n_) * std::size_t(n_);
        const cudalib::Workspace<T> tau(std::size_t(n_ - 1)), vectors(square);
        std::vector<R> off(std::size_t(n_ - 1));
        reduce(tau.data(), off);
        if constexpr (isComplex<T>) {
            const cudalib::Workspace<R> real(square);
            stedc(n_, values_.data(), off.data(), real.data(), n_);
            const int together = std::min(n_, std::numeric_limits<int>::max() / n_);
            for (int j = 0; j < n_; j += together)
                copyVectorRealToComplex(n_ * std::min(together, n_ - j),
                                        at(vectors.data(), n_, 0, j), 1, at(real.data(), n_, 0, j),
                                        1);
        } else {
            stedc(n_, values_.data(), off.data(), vectors.data(), n_);
        }
        ormqr('L', 'N', n_ - 1, n_, n_ - 1, a_.data + 1, a_.ld, tau.data(), vectors.data() + 1, n_);
        LACPY('A', n_, n_, vectors.data(), n_, a_.data, a_.ld);
    }

    const bool upper_;
    const int n_;
    const MatrixView<T> a_;
    R* const w_;
    std::vector<R> values_;
    std::optional<InfoException> failure_;
};

// Of others the CPU library makes what it likes. An imaginary part of the diagonal is not read.
template <class T>
bool isFinite(bool upper, int n, const T* a, int lda) {
    RealOf<T> sum = 0;
    for (int j = 0; j < n; ++j) {
        for (int i = upper ? 0 : j + 1; i < (upper ? j : n); ++i)
            sum += (realPart(*at(a, lda, i, j)) + imaginaryPart(*at(a, lda, i, j))) * 0;
        sum += realPart(*at(a, lda, j, j)) * 0;
    }
    return sum == 0;
}

}  // namespace

template <class T>
bool Syevd<T>::isSmall() const {
    const int most = jobz == 'V' ? smallEigenvectors<T>() : smallEigenvalues<T>();
    return n <= most && isFinite(uplo == 'U', n, a, lda);
}
template <class T>
lumoStatus Syevd<T>::runOnCpu() const {
    checkReturnedInfo(host::syevd(jobz, uplo, n, a, lda, w));
    return lumoNoError;
}

template <class T>
void Syevd<T>::run() const {
    SymmetricEigenproblem<T>(uplo, n, a, lda, w).run(jobz == 'V');
}

LUMO_INSTANTIATE_MEMBERS(Syevd)
LUMO_EXPORT_S_D(syevd, Syevd)
LUMO_EXPORT_C_Z(heevd, Syevd)

}  // namespace lumo
