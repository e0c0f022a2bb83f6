#include "lapack/gglse.h"

#include "basic/Set/Set.h"
#include "blas/cublas.h"
#include "common/matrix.h"
#include "cudalib/workspace_pool.h"
#include "lapack/apply_q.h"
#include "lapack/orthogonal_factorization.h"
#include "lapack/trtrs.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// One upper triangular solve of the two; a singular triangle is the data error `info`.
template <class T>
void solve(int n, const T* a, int lda, T* b, int info) {
    try {
        trtrs('U', 'N', 'N', n, 1, a, lda, b, n);
    } catch (const InfoException& e) {
        if (e.info() < 1) throw;
        throwDataError(info);
    }
}

// B = (0 T12) Q and A = Z T Q (LAPACK xGGRQF) for p x n B and m x n A.
template <class T>
void ggrqf(int p, int m, int n, T* b, int ldb, T* taub, T* a, int lda, T* taua) {
    factorizeRq(p, n, b, ldb, taub);
    ormrq('R', 'C', m, n, p, b, ldb, taub, a, lda);
    factorizeQr(m, n, a, lda, taua);
}

}  // namespace

// What a singular triangle leaves unsolved comes back as zero.
template <class T>
void Gglse<T>::prepareCopies() const {
    setVector<0>(n, x, 1);
}

template <class T>
void Gglse<T>::run() const {
    const T one(1), minusOne(-1);
    const int free = n - p;  // unknowns that the constraints leave
    cudalib::Workspace<T> taub{std::size_t(p)}, taua{std::size_t(std::min(m, n))};
    ggrqf(p, m, n, b, ldb, taub.data(), a, lda, taua.data());
    ormqr('L', 'C', m, 1, std::min(m, n), a, lda, taua.data(), c, std::max(1, m));

    if (p > 0) {
        solve(p, at(b, ldb, 0, free), ldb, d, 1);
        cublas::copy(p, d, 1, x + free, 1);
        cublas::gemv('N', free, p, minusOne, at(a, lda, 0, free), lda, d, 1, one, c, 1);
    }
    if (free > 0) {
        solve(free, a, lda, c, 2);
        cublas::copy(free, c, 1, x, 1);
    }
    const int rows = m < n ? m - free : p;
    if (rows > 0) {
        if (m < n)
            cublas::gemv('N', rows, n - m, minusOne, at(a, lda, free, m), lda, d + rows, 1, one,
                         c + free, 1);
        cublas::trmv('U', 'N', 'N', rows, at(a, lda, free, free), lda, d, 1);
        cublas::axpy(rows, minusOne, d, 1, c + free, 1);
    }
    ormrq('L', 'C', n, 1, p, b, ldb, taub.data(), x, n);
}

LUMO_INSTANTIATE_MEMBERS(Gglse)
LUMO_EXPORT_S_D_C_Z(gglse, Gglse)

}  // namespace lumo
