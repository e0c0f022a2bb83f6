#include "basic/Subtract/Subtract.h"

#include "cudalib/launch.h"

template <class T>
void SubtractMatrix_NN_k(int m, int n, T* a, int lda, T* b, int ldb);
template <class T>
void SubtractMatrix_NT_k(int m, int n, T* a, int lda, T* b, int ldb);
template <class T>
void SubtractMatrix_TN_k(int m, int n, T* a, int lda, T* b, int ldb);
template <class T>
void SubtractMatrix_TT_k(int m, int n, T* a, int lda, T* b, int ldb);

namespace lumo {
namespace {

bool transposes(char letter) {
    return letter == 'T' || letter == 'C';
}

}  // namespace

template <class T>
cudaError_t subtractMatrix(char transa, char transb, int m, int n, T* a, int lda, const T* b,
                           int ldb) {
    if (!transposes(transa)) {
        const bool tb = transposes(transb);
        auto kernel = tb ? &SubtractMatrix_NT_k<T> : &SubtractMatrix_NN_k<T>;
        return cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
            return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns, 16), kernel, slab.rows,
                                   slab.columns, slab.of(a, lda), lda, slab.of(b, ldb, tb), ldb);
        });
    }
    if (m <= 0 || n <= 0) return cudaSuccess;
    // One grid, since its blocks exchange tiles across the diagonal. It always suffices: memory
    // for both shapes of an A with a side of a million would be that of a million squared.
    auto kernel =
        transb == 'T' || transa == 'C' ? &SubtractMatrix_TT_k<T> : &SubtractMatrix_TN_k<T>;
    return cudalib::launch(cudalib::Map2D(m, n, 16), kernel, m, n, a, lda, b, ldb);
}

LUMO_INSTANTIATE(subtractMatrix)

}  // namespace lumo
