// A matrix that is no wider than long as Q B P^H with a bidiagonal B, by way of QR where that is
// faster.
#pragma once

#include <limits>
#include <vector>

#include "basic/Copy/Copy.h"
#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/apply_q.h"
#include "lapack/gebrd.h"
#include "lapack/orthogonal_factorization.h"

namespace lumo {

// Of an m x n device matrix, m >= n > 0, in its place.
template <class T>
class LongBidiagonal {
    using R = RealOf<T>;

  public:
    // d, e: the diagonals of B, upper bidiagonal, in host memory.
    LongBidiagonal(int m, int n, T* a, int lda, R* d, std::vector<R>& e)
        : m_(m),
          n_(n),
          // From this shape on it pays to make A square first (LAPACK xGESDD's MNTHR).
          square_(double(m) >= 11. / 6 * n),
          a_{a, lda},
          tau_(square_ ? std::size_t(n) : 0),
          triangle_(square_ ? order() : 0),
          k_{square_ ? MatrixView<T>{triangle_.data(), n} : a_},
          tauq_(std::size_t(n)),
          taup_(std::size_t(n)) {
        if (square_) {
            factorizeQr(m, n, a, lda, tau_.data());
            LASET('A', n, n, T(0), T(0), k_.data, k_.ld);
            LACPY('U', n, n, a, lda, k_.data, k_.ld);
        }
        reduce(d, e);
    }

    // C := Q C (trans "N") or Q^H C ("C") for a matrix of m rows.
    void applyQ(char trans, int columns, T* c, int ldc) const {
        const auto outer = [&] {
            if (square_) ormqr('L', trans, m_, columns, n_, a_.data, a_.ld, tau_.data(), c, ldc);
        };
        if (trans != 'N') outer();
        ormqr('L', trans, square_ ? n_ : m_, columns, n_, k_.data, k_.ld, tauq_.data(), c, ldc);
        if (trans == 'N') outer();
    }
    // C := P C ("N") or P^H C ("C") for a matrix of n rows.
    void applyP(char trans, int columns, T* c, int ldc) const {
        ormlq('L', trans == 'N' ? 'C' : 'N', n_ - 1, columns, n_ - 1, k_.at(0, 1), k_.ld,
              taup_.data(), c + 1, ldc);
    }

    // Vectors of B, n x n and real, as elements of A's type.
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

  private:
    std::size_t order() const { return std::size_t(n_) * std::size_t(n_); }

    void reduce(R* d, std::vector<R>& e) {
        const cudalib::Workspace<R> numbers(2 * std::size_t(n_));
        gebrd(square_ ? n_ : m_, n_, k_.data, k_.ld, numbers.data(), numbers.data() + n_,
              tauq_.data(), taup_.data());
        cudalib::synchronizeAndCheck();  // iterations are for matrices that there are
        std::vector<R> both(2 * std::size_t(n_) - 1);
        cudalib::checkCudaError(cudaMemcpy(both.data(), numbers.data(), both.size() * sizeof(R),
                                           cudaMemcpyDeviceToHost));
        std::copy_n(both.begin(), n_, d);
        e.assign(both.begin() + n_, both.end());
    }

    const int m_, n_;
    const bool square_;
    const MatrixView<T> a_;
    const cudalib::Workspace<T> tau_, triangle_;
    const MatrixView<T> k_;
    const cudalib::Workspace<T> tauq_, taup_;
};

}  // namespace lumo
