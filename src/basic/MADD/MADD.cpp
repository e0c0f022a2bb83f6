#include "basic/MADD/MADD.h"

#include "cudalib/launch.h"

template <class T, class R>
void MADD_NN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb, T* c,
               int ldc);
template <class T, class R>
void MADD_NT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb, T* c,
               int ldc);
template <class T, class R>
void MADD_TN_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb, T* c,
               int ldc);
template <class T, class R>
void MADD_TT_k(int m, int n, R alpha, const T* a, int lda, R beta, const T* b, int ldb, T* c,
               int ldc);

namespace lumo {

template <class T>
cudaError_t MADD(char transa, char transb, int m, int n, const T* a, int lda, const T* b, int ldb,
                 T* c, int ldc, RealOf<T> alpha, RealOf<T> beta) {
    using R = RealOf<T>;
    const bool ta = transa == 'T', tb = transb == 'T';
    auto kernel = ta ? (tb ? &MADD_TT_k<T, R> : &MADD_TN_k<T, R>)
                     : (tb ? &MADD_NT_k<T, R> : &MADD_NN_k<T, R>);
    return cudalib::forEachSlab(m, n, [&](const cudalib::Slab& slab) {
        return cudalib::launch(cudalib::Map2D(slab.rows, slab.columns, 16), kernel, slab.rows,
                               slab.columns, alpha, slab.of(a, lda, ta), lda, beta,
                               slab.of(b, ldb, tb), ldb, slab.of(c, ldc), ldc);
    });
}

LUMO_INSTANTIATE(MADD)

}  // namespace lumo
