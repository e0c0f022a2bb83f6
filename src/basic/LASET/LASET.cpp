#include "basic/LASET/LASET.h"

#include <algorithm>

#include "common/exceptions.h"
#include "common/letters.h"
#include "cudalib/launch.h"

template <class T>
void LASET_k(char uplo, int m, int n, T alpha, T beta, T* a, int lda);

namespace lumo {
namespace {

void check(char& uplo, int m, int n, const void* a, int lda) {
    uplo = upper(uplo);
    if (!isOneOf(uplo, "ULAF")) throwArgumentError(-1);
    if (m < 0) throwArgumentError(-2);
    if (n < 0) throwArgumentError(-3);
    if (m == 0 || n == 0) return;
    if (!a) throwArgumentError(-6);
    if (lda < std::max(1, m)) throwArgumentError(-7);
}

}  // namespace

template <class T>
void LASET(char uplo, int m, int n, T alpha, T beta, T* a, int lda) {
    check(uplo, m, n, a, lda);
    cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        const char part = slab.part(uplo);
        if (!part) return cudaSuccess;
        // Only the first slab's diagonal is the matrix's.
        const bool first = slab.i == 0 && slab.j == 0;
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns), &LASET_k<T>, part,
                               slab.rows, slab.columns, alpha, first ? beta : alpha,
                               slab.of(a, lda), lda);
    });
}

LUMO_INSTANTIATE(LASET)

}  // namespace lumo
