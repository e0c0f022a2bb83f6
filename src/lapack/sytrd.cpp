#include "lapack/sytrd.h"

#include <algorithm>

#include "basic/Copy/Copy.h"
#include "blas/cublas.h"
#include "blas/gemv/gemv.h"
#include "blas/symv/symv.h"
#include "brd/reflectors/reflectors.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/tuning.h"
#include "trd/companion/companion.h"
#include "trd/hermitian_product/hermitian_product.h"

namespace lumo {
namespace {

// What is left of A is A - P C^T, with the reflectors' vectors and their companions in turn:
// P = (v1 w1 v2 w2 ...) and C = conj(w1 v1 w2 v2 ...).
template <class T>
class TridiagonalReduction {
    using R = RealOf<T>;

  public:
    TridiagonalReduction(int n, T* a, int lda, R* d, R* e, T* tau)
        : n_(n),
          nb_(std::min(sytrdTuning<T>.current(), n)),
          a_{a, lda},
          d_(d),
          e_(e),
          tau_(tau),
          memory_(4 * std::size_t(n) * std::size_t(nb_)),
          p_{memory_.data(), n},
          c_{p_.at(0, 2 * nb_), n},
          parts_(std::size_t(n) * std::size_t(hermitianProductParts(n))) {}

    void run() const {
        const cudalib::Workspace<T> products(2 * std::size_t(nb_));
        for (int j = 0; j < n_ - 1; j += nb_) {
            const int count = std::min(nb_, n_ - 1 - j), next = j + count;
            for (int i = 0; i < count; ++i) reduceColumn(j + i, 2 * i, products.data());
            cublas::syr2k('L', 'N', n_ - next, count, T(-1), p_.at(next, 0), 2 * n_, p_.at(next, 1),
                          2 * n_, R(1), a_.at(next, next), a_.ld);
        }
        takeDiagonal();
    }

  private:
    // Column k, when `rank` columns of P and C are there.
    void reduceColumn(int k, int rank, T* products) const {
        const int below = n_ - k - 1;
        if (rank > 0)
            cublas::gemv('N', n_ - k, rank, T(-1), p_.at(k, 0), n_, c_.at(k, 0), n_, T(1),
                         a_.at(k, k), 1);
        T *const v = p_.at(k + 1, rank), *const w = p_.at(k + 1, rank + 1);
        columnReflector(below, 0, a_.at(k + 1, k), v, e_ + k, tau_ + k, 0, v, n_, products);
        multiply(below, a_.at(k + 1, k + 1), v, w);
        if (rank > 0) {
            gemv('T', below, rank, T(1), c_.at(k + 1, 0), n_, v, 1, T(0), products, 1);
            cublas::gemv('N', below, rank, T(-1), p_.at(k + 1, 0), n_, products, 1, T(1), w, 1);
        }
        companion(below, tau_ + k, v, w, c_.at(k + 1, rank), c_.at(k + 1, rank + 1));
    }

    // w := A v.
    void multiply(int order, const T* a, const T* v, T* w) const {
        if (isComplex<T> || (platform::sharesMemory() && order >= ownSymvOnCpu))
            hermitianProduct(order, a, a_.ld, v, w, parts_.data());
        else
            symv('L', order, T(1), a, a_.ld, v, 1, T(0), w, 1);
    }

    void takeDiagonal() const {
        if constexpr (isComplex<T>)
            copyVectorComplexToReal(n_, a_.data, a_.ld + 1, d_, 1);
        else
            copyVector(n_, a_.data, a_.ld + 1, d_, 1);
    }

    const int n_, nb_;
    const MatrixView<T> a_;
    R *const d_, *const e_;
    T* const tau_;
    const cudalib::Workspace<T> memory_;
    const MatrixView<T> p_, c_;
    const cudalib::Workspace<T> parts_;
};

}  // namespace

template <class T>
void sytrd(int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tau) {
    if (n > 0) TridiagonalReduction<T>(n, a, lda, d, e, tau).run();
}

LUMO_INSTANTIATE(sytrd)

}  // namespace lumo
