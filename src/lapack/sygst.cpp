#include "lapack/sygst.h"

#include <algorithm>

#include "basic/LACPY/LACPY.h"
#include "basic/LASET/LASET.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

template <class T>
class Standardization {
  public:
    Standardization(int itype, int n, T* a, int lda, const T* b, int ldb)
        : inverse_(itype == 1),
          n_(n),
          leaf_(std::min(n, sygstLeaf)),
          a_{a, lda},
          b_{b, ldb},
          identity_(square(leaf_)),
          whole_(square(leaf_)) {}

    void run() {
        LASET('A', leaf_, leaf_, T(0), T(1), identity_.data(), leaf_);
        reduce(0, n_);
    }

  private:
    static constexpr T one = T(1), zero = T(0);
    static std::size_t square(int n) { return std::size_t(n) * std::size_t(n); }

    // The diagonal block of rows and columns i ... i + n - 1.
    void reduce(int i, int n) const {
        if (n <= leaf_) return reduceWhole(i, n);
        const int half = n / 2, j = i + half, rest = n - half;
        T *const a11 = a_.at(i, i), *const a21 = a_.at(j, i), *const a22 = a_.at(j, j);
        const T *const l11 = b_.at(i, i), *const l21 = b_.at(j, i), *const l22 = b_.at(j, j);
        reduce(i, half);
        // The product with A's block, one of two equal terms of A21, is added before and after the
        // update, which so takes both its terms at once.
        if (inverse_) {
            const auto subtractHalf = [&] {
                cublas::symm('R', 'L', rest, half, T(-0.5), a11, a_.ld, l21, b_.ld, one, a21,
                             a_.ld);
            };
            cublas::trsm('R', 'L', 'C', 'N', rest, half, one, l11, b_.ld, a21, a_.ld);
            subtractHalf();
            cublas::syr2k('L', 'N', rest, half, T(-1), a21, a_.ld, l21, b_.ld, RealOf<T>(1), a22,
                          a_.ld);
            subtractHalf();
            cublas::trsm('L', 'L', 'N', 'N', rest, half, one, l22, b_.ld, a21, a_.ld);
        } else {
            const auto addHalf = [&] {
                cublas::symm('L', 'L', rest, half, T(0.5), a22, a_.ld, l21, b_.ld, one, a21, a_.ld);
            };
            cublas::trmm('R', 'L', 'N', 'N', rest, half, one, l11, b_.ld, a21, a_.ld);
            addHalf();
            cublas::syr2k('L', adjointLetter<T>, half, rest, one, a21, a_.ld, l21, b_.ld,
                          RealOf<T>(1), a11, a_.ld);
            addHalf();
            cublas::trmm('L', 'L', 'C', 'N', rest, half, one, l22, b_.ld, a21, a_.ld);
        }
        reduce(j, rest);
    }

    // A small block, made whole: its product with the identity.
    void reduceWhole(int i, int n) const {
        T* const x = whole_.data();
        const T* const l = b_.at(i, i);
        cublas::symm('L', 'L', n, n, one, a_.at(i, i), a_.ld, identity_.data(), leaf_, zero, x,
                     leaf_);
        if (inverse_) {
            cublas::trsm('L', 'L', 'N', 'N', n, n, one, l, b_.ld, x, leaf_);
            cublas::trsm('R', 'L', 'C', 'N', n, n, one, l, b_.ld, x, leaf_);
        } else {
            cublas::trmm('L', 'L', 'C', 'N', n, n, one, l, b_.ld, x, leaf_);
            cublas::trmm('R', 'L', 'N', 'N', n, n, one, l, b_.ld, x, leaf_);
        }
        LACPY('L', n, n, x, leaf_, a_.at(i, i), a_.ld);
    }

    const bool inverse_;
    const int n_, leaf_;
    const MatrixView<T> a_;
    const MatrixView<const T> b_;
    const cudalib::Workspace<T> identity_, whole_;
};

}  // namespace

template <class T>
void sygst(int itype, int n, T* a, int lda, const T* b, int ldb) {
    Standardization<T>(itype, n, a, lda, b, ldb).run();
}

LUMO_INSTANTIATE(sygst)

}  // namespace lumo
