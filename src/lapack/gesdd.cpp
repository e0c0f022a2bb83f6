#include "lapack/gesdd.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "basic/Norms/Norms.h"
#include "basic/Transpose/Transpose.h"
#include "blas/cublas.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/apply_q.h"
#include "lapack/bdsdc.h"
#include "lapack/bdsqr_scalars.h"
#include "lapack/gebrd.h"
#include "lapack/gesvd.h"
#include "lapack/orthogonal_factorization.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// Of a matrix that is no wider than long, A = L S R^H: the n values to the host, R (n x n), and the
// first columns of L, n or m of them. A is destroyed.
template <class T>
class LongDecomposition {
    using R = RealOf<T>;

  public:
    LongDecomposition(int m, int n, T* a, int lda)
        : m_(m),
          n_(n),
          // From this shape on it pays to make A square first.
          square_(double(m) >= 11. / 6 * n),
          a_{a, lda},
          tau_(square_ ? std::size_t(n) : 0),
          triangle_(square_ ? std::size_t(n) * std::size_t(n) : 0),
          k_{square_ ? MatrixView<T>{triangle_.data(), n} : a_},
          tauq_(std::size_t(n)),
          taup_(std::size_t(n)) {}

    void run(R* values, T* left, int ldl, int columns, T* right, int ldr) {
        if (square_) makeSquare();
        std::vector<R> e = reduce(values);
        const cudalib::Workspace<R> u(order()), v(order());
        bdsdc(n_, values, e.data(), u.data(), n_, v.data(), n_);
        LASET('A', m_, columns, T(0), T(1), left, ldl);
        place(u.data(), left, ldl);
        place(v.data(), right, ldr);
        const int rows = square_ ? n_ : m_;
        ormqr('L', 'N', rows, square_ ? n_ : columns, n_, k_.data, k_.ld, tauq_.data(), left, ldl);
        if (square_) ormqr('L', 'N', m_, columns, n_, a_.data, a_.ld, tau_.data(), left, ldl);
        ormlq('L', 'C', n_ - 1, n_, n_ - 1, k_.at(0, 1), k_.ld, taup_.data(), right + 1, ldr);
    }

  private:
    std::size_t order() const { return std::size_t(n_) * std::size_t(n_); }

    void makeSquare() {
        factorizeQr(m_, n_, a_.data, a_.ld, tau_.data());
        LASET('A', n_, n_, T(0), T(0), k_.data, k_.ld);
        LACPY('U', n_, n_, a_.data, a_.ld, k_.data, k_.ld);
    }

    // To the diagonals of an upper bidiagonal matrix.
    std::vector<R> reduce(R* d) {
        const cudalib::Workspace<R> numbers(2 * std::size_t(n_));
        R* const e = numbers.data() + n_;
        gebrd(square_ ? n_ : m_, n_, k_.data, k_.ld, numbers.data(), e, tauq_.data(), taup_.data());
        cudalib::synchronizeAndCheck();  // iterations are for matrices that there are
        std::vector<R> both(2 * std::size_t(n_));
        cudalib::checkCudaError(cudaMemcpy(both.data(), numbers.data(),
                                           (both.size() - 1) * sizeof(R), cudaMemcpyDeviceToHost));
        std::copy_n(both.begin(), n_, d);
        return {both.begin() + n_, both.end() - 1};
    }

    void place(const R* vectors, T* to, int ldt) const {
        if constexpr (isComplex<T>) {
            const cudalib::Workspace<T> elements(order());
            const int together = std::min(n_, std::numeric_limits<int>::max() / n_);
            for (int j = 0; j < n_; j += together)
                copyVectorRealToComplex(n_ * std::min(together, n_ - j),
                                        at(elements.data(), n_, 0, j), 1, at(vectors, n_, 0, j), 1);
            LACPY('A', n_, n_, elements.data(), n_, to, ldt);
        } else {
            LACPY('A', n_, n_, vectors, n_, to, ldt);
        }
    }

    const int m_, n_;
    const bool square_;
    const MatrixView<T> a_;
    const cudalib::Workspace<T> tau_, triangle_;
    const MatrixView<T> k_;
    const cudalib::Workspace<T> tauq_, taup_;
};

template <class T>
class SingularVectors {
    using R = RealOf<T>;

  public:
    explicit SingularVectors(const Gesdd<T>& r) : r_(r), values_(std::size_t(count())) {}

    void run() {
        const R norm = largest(), scale = std::isfinite(norm) ? scaleFor(norm) : R(1);
        if (scale != 1)
            for (int j = 0; j < r_.n; ++j) cublas::scal(r_.m, T(scale), at(r_.a, r_.lda, 0, j), 1);
        try {
            if (!std::isfinite(norm)) refuse();
            if (r_.jobz == 'N')
                findValues();
            else if (r_.m >= r_.n)
                decomposeLong();
            else
                decomposeWide();
        } catch (const InfoException& e) {
            if (e.info() < 1) throw;
            failure_ = e;
            clear();
        }
        if (scale != 1)
            for (R& x : values_) x /= scale;
        cudalib::checkCudaError(
            cudaMemcpy(r_.s, values_.data(), values_.size() * sizeof(R), cudaMemcpyHostToDevice));
        if (failure_) throw *failure_;
    }

  private:
    int count() const { return std::min(r_.m, r_.n); }
    bool overwrites() const { return r_.jobz == 'O'; }

    [[noreturn]] void refuse() {
        std::fill(values_.begin(), values_.end(), std::numeric_limits<R>::quiet_NaN());
        throwDataError(count());
    }
    R largest() const {
        const cudalib::Workspace<R> maxima(std::size_t(r_.n));
        columnMaxima(r_.m, r_.n, r_.a, r_.lda, maxima.data());
        std::vector<R> all(std::size_t(r_.n));
        cudalib::checkCudaError(
            cudaMemcpy(all.data(), maxima.data(), all.size() * sizeof(R), cudaMemcpyDeviceToHost));
        R most = 0;
        for (R x : all) most = x > most || std::isnan(x) ? x : most;
        return most;
    }
    // As in LAPACK: squares of what it leaves alone neither overflow nor underflow.
    static R scaleFor(R norm) {
        const R least = std::sqrt(safeMinimum<R>) / (2 * roundingUnit<R>), most = 1 / least;
        if (norm > 0 && norm < least) return least / norm;
        return norm > most ? most / norm : R(1);
    }

    // Of memory that nobody has written to, nothing comes out.
    void clear() const {
        LASET('A', r_.m, r_.columnsOfU(), T(0), T(0), r_.u, r_.ldu);
        LASET('A', r_.rowsOfVt(), r_.n, T(0), T(0), r_.vt, r_.ldvt);
    }

    void findValues() {
        const auto fetch = [&] {
            cudalib::checkCudaError(cudaMemcpy(values_.data(), r_.s, values_.size() * sizeof(R),
                                               cudaMemcpyDeviceToHost));
        };
        try {
            Gesvd<T>{'N', 'N', r_.m, r_.n, r_.a, r_.lda, r_.s, nullptr, 1, nullptr, 1}.run();
        } catch (const InfoException&) {
            fetch();
            throw;
        }
        fetch();
    }

    void decomposeLong() {
        const int m = r_.m, n = r_.n, columns = overwrites() ? n : r_.columnsOfU();
        const cudalib::Workspace<T> right(std::size_t(n) * std::size_t(n)),
            left(overwrites() ? std::size_t(m) * std::size_t(n) : 0);
        T* const u = overwrites() ? left.data() : r_.u;
        const int ldu = overwrites() ? m : r_.ldu;
        LongDecomposition<T>(m, n, r_.a, r_.lda)
            .run(values_.data(), u, ldu, columns, right.data(), n);
        transpose(r_.vt, std::size_t(r_.ldvt), right.data(), std::size_t(n), std::size_t(n),
                  std::size_t(n), isComplex<T>);
        if (overwrites()) LACPY('A', m, n, u, ldu, r_.a, r_.lda);
    }

    // A^H = V S U^H.
    void decomposeWide() {
        const int m = r_.m, n = r_.n, columns = overwrites() ? m : r_.rowsOfVt();
        const cudalib::Workspace<T> mirrored(std::size_t(n) * std::size_t(m)),
            left(std::size_t(n) * std::size_t(columns));
        transpose(mirrored.data(), std::size_t(n), r_.a, std::size_t(r_.lda), std::size_t(m),
                  std::size_t(n), isComplex<T>);
        LongDecomposition<T>(n, m, mirrored.data(), n)
            .run(values_.data(), left.data(), n, columns, r_.u, r_.ldu);
        T* const vt = overwrites() ? r_.a : r_.vt;
        const int ldvt = overwrites() ? r_.lda : r_.ldvt;
        transpose(vt, std::size_t(ldvt), left.data(), std::size_t(n), std::size_t(n),
                  std::size_t(columns), isComplex<T>);
    }

    const Gesdd<T>& r_;
    std::vector<R> values_;
    std::optional<InfoException> failure_;
};

}  // namespace

template <class T>
void Gesdd<T>::run() const {
    SingularVectors<T>(*this).run();
}

LUMO_INSTANTIATE_MEMBERS(Gesdd)
LUMO_EXPORT_S_D_C_Z(gesdd, Gesdd)

}  // namespace lumo
