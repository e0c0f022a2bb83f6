#include "lapack/orgbr.h"

#include <algorithm>

#include "basic/Copy/Copy.h"
#include "basic/LASET/LASET.h"
#include "common/element_types.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/generate_q.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

// Moves all columns but the last one to the right ("Q") or all rows but the last one down ("P") in
// a matrix of order n, whose first row and column become those of the unit matrix. By slabs of
// columns from the right, through scratch: a kernel has no order in which to move in place.
template <class T>
void shiftReflectors(bool right, int n, T* a, int lda) {
    const MatrixView<T> view{a, lda};
    const int width = std::min(n, geqrfTuning<T>.current());
    cudalib::Workspace<T> scratch(std::size_t(n) * std::size_t(width));
    for (int end = n; end > 1; end -= width) {
        const int begin = std::max(1, end - width), count = end - begin;
        copyMatrix(n - 1, count, right ? view.at(1, begin - 1) : view.at(0, begin), lda,
                   scratch.data(), n);
        copyMatrix(n - 1, count, scratch.data(), n, view.at(1, begin), lda);
    }
    LASET('A', n, 1, T(0), T(1), a, lda);
    LASET('A', 1, n, T(0), T(1), a, lda);
}

}  // namespace

template <class T>
void orgbr(char vect, int m, int n, int k, T* a, int lda, T* tau) {
    if (m <= 0 || n <= 0) return;
    const bool q = vect == 'Q';
    if (q ? m >= k : k < n) return q ? orgqr(m, n, k, a, lda, tau) : orglq(m, n, k, a, lda, tau);
    shiftReflectors(q, n, a, lda);
    if (n > 1) (q ? orgqr<T> : orglq<T>)(n - 1, n - 1, n - 1, at(a, lda, 1, 1), lda, tau);
}

LUMO_INSTANTIATE(orgbr)

}  // namespace lumo
