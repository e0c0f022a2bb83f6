#include "lapack/sytrd.h"

#include <algorithm>

#include "basic/Copy/Copy.h"
#include "basic/Set/Set.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "blas/gemv/gemv.h"
#include "brd/reflectors/reflectors.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/tuning.h"
#include "trd/companion/companion.h"
#include "trd/hermitian_product/hermitian_product.h"

namespace lumo {
namespace {

// What is left of A is A - V W^H - W V^H, with the reflectors' vectors v and their companions w as
// the columns of P = (... v3 v2 v1 w1 w2 w3 ...): P times its own columns in reversed order, which
// a negative increment has of the vectors that P is multiplied by.
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
          memory_(2 * std::size_t(nb_) * (std::size_t(n) + 2)),
          p_{memory_.data(), n},
          row_(p_.at(0, 2 * nb_)),
          products_(row_ + 2 * nb_),
          parts_(std::size_t(n) * std::size_t(hermitianProductParts<T>(n))) {}

    void run() const {
        for (int j = 0; j < n_ - 1; j += nb_) {
            const int count = std::min(nb_, n_ - 1 - j), next = j + count;
            for (int i = 0; i < count; ++i) reduceColumn(j + i, i);
            // V is in A, but for the 1 of its last column, where A has an element of T.
            setElement<1>(a_.at(next, next - 1));
            cublas::syr2k('L', 'N', n_ - next, count, T(-1), a_.at(next, j), a_.ld,
                          p_.at(next, nb_), n_, R(1), a_.at(next, next), a_.ld);
            restore(e_ + next - 1, a_.at(next, next - 1));
        }
        takeDiagonal();
    }

  private:
    // Column k, when P has `pairs` of v and w; row_ is P's row k, conjugated.
    void reduceColumn(int k, int pairs) const {
        const int below = n_ - k - 1, rank = 2 * pairs, left = nb_ - pairs;
        if (rank > 0)
            cublas::gemv('N', n_ - k, rank, T(-1), p_.at(k, left), n_, row_, -1, T(1), a_.at(k, k),
                         1);
        T *const v = p_.at(k + 1, left - 1), *const w = p_.at(k + 1, nb_ + pairs);
        columnReflector(below, 0, a_.at(k + 1, k), v, e_ + k, tau_ + k, 0, v, n_, row_);
        multiply(below, a_.at(k + 1, k + 1), v, w);
        if (rank > 0) {
            gemv(adjointLetter<T>, below, rank, T(1), p_.at(k + 1, left), n_, v, 1, T(0), products_,
                 1);
            cublas::gemv('N', below, rank, T(-1), p_.at(k + 1, left), n_, products_, -1, T(1), w,
                         1);
        }
        companion(below, tau_ + k, v, w, rank + 2, v, n_, row_);
    }

    // w := A v.
    void multiply(int order, const T* a, const T* v, T* w) const {
        if (isComplex<T> || !platform::sharesMemory() || order >= ownSymvOnCpu)
            hermitianProduct(order, a, a_.ld, v, w, parts_.data());
        else
            cublas::symv('L', order, T(1), a, a_.ld, v, 1, T(0), w, 1);
    }

    static void restore(const R* value, T* element) {
        if constexpr (isComplex<T>)
            copyElementRealToComplex(value, element);
        else
            copyElement(value, element);
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
    const MatrixView<T> p_;
    T *const row_, *const products_;
    const cudalib::Workspace<T> parts_;
};

}  // namespace

template <class T>
void sytrd(int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tau) {
    if (n > 0) TridiagonalReduction<T>(n, a, lda, d, e, tau).run();
}

LUMO_INSTANTIATE(sytrd)

}  // namespace lumo
