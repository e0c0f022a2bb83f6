// The CPU LAPACK, arguments by value; what has an info returns it:
// info = cpu::getrf<float>(m, n, a, lda, ipiv).
#pragma once

#include <algorithm>
#include <vector>

#include "platform/cpu/fortran.h"

namespace cpu {

// The signature of a routine with a workspace of reals behind the other where T is complex.
template <bool isComplex, class Signature, class R>
struct RealWork {
    using Behind = Signature;
};
template <class... A, class R>
struct RealWork<true, int(A...), R> {
    using Behind = int(A..., R* rwork);
};

// Factorisations, and what is made of them.
CPU_ROUTINE(getrf, sgetrf, dgetrf, cgetrf, zgetrf, int(int m, int n, T* a, int lda, int* ipiv))
CPU_ROUTINE(gesv, sgesv, dgesv, cgesv, zgesv,
            int(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb))
CPU_ROUTINE(getrs, sgetrs, dgetrs, cgetrs, zgetrs,
            int(char trans, int n, int nrhs, const T* a, int lda, const int* ipiv, T* b, int ldb))
CPU_ROUTINE(potrf, spotrf, dpotrf, cpotrf, zpotrf, int(char uplo, int n, T* a, int lda))
CPU_ROUTINE(gecon, sgecon, dgecon, cgecon, zgecon,
            int(char norm, int n, const T* a, int lda, R anorm, R* rcond, T* work,
                std::conditional_t<platform::isComplex<T>, R, int>* work2))
CPU_ROUTINE(geqrf, sgeqrf, dgeqrf, cgeqrf, zgeqrf,
            int(int m, int n, T* a, int lda, T* tau, T* work, int lwork))
CPU_ROUTINE(geqr2, sgeqr2, dgeqr2, cgeqr2, zgeqr2,
            int(int m, int n, T* a, int lda, T* tau, T* work))
CPU_ROUTINE(larft, slarft, dlarft, clarft, zlarft,
            void(char direct, char storev, int n, int k, T* v, int ldv, const T* tau, T* t,
                 int ldt))
CPU_ROUTINE(orgqr, sorgqr, dorgqr, cungqr, zungqr,
            int(int m, int n, int k, T* a, int lda, const T* tau, T* work, int lwork))
CPU_ROUTINE(gebrd, sgebrd, dgebrd, cgebrd, zgebrd,
            int(int m, int n, T* a, int lda, R* d, R* e, T* tauq, T* taup, T* work, int lwork))
CPU_ROUTINE(ormbr, sormbr, dormbr, cunmbr, zunmbr,
            int(char vect, char side, char trans, int m, int n, int k, const T* a, int lda,
                const T* tau, T* c, int ldc, T* work, int lwork))

// Symmetric tridiagonal and bidiagonal matrices, which are real for all types.
CPU_ROUTINE(steqr, ssteqr, dsteqr, csteqr, zsteqr,
            int(char compz, int n, R* d, R* e, T* z, int ldz, R* work))
CPU_ROUTINE(lasdq, slasdq, dlasdq, slasdq, dlasdq,
            int(char uplo, int sqre, int n, int ncvt, int nru, int ncc, R* d, R* e, R* vt, int ldvt,
                R* u, int ldu, R* c, int ldc, R* work))
CPU_ROUTINE(sterf, ssterf, dsterf, ssterf, dsterf, int(int n, R* d, R* e))

// Whole problems.
CPU_ROUTINE(gels, sgels, dgels, cgels, zgels,
            int(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb, T* work,
                int lwork))
CPU_ROUTINE(gglse, sgglse, dgglse, cgglse, zgglse,
            int(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x, T* work,
                int lwork))
CPU_ROUTINE(syevd, ssyevd, dsyevd, cheevd, zheevd,
            std::conditional_t<platform::isComplex<T>,
                               int(char jobz, char uplo, int n, T* a, int lda, R* w, T* work,
                                   int lwork, R* rwork, int lrwork, int* iwork, int liwork),
                               int(char jobz, char uplo, int n, T* a, int lda, R* w, T* work,
                                   int lwork, int* iwork, int liwork)>)
CPU_ROUTINE(gesvd, sgesvd, dgesvd, cgesvd, zgesvd,
            typename RealWork<platform::isComplex<T>,
                              int(char jobu, char jobvt, int m, int n, T* a, int lda, R* s, T* u,
                                  int ldu, T* vt, int ldvt, T* work, int lwork),
                              R>::Behind)
CPU_ROUTINE(gesdd, sgesdd, dgesdd, cgesdd, zgesdd,
            std::conditional_t<platform::isComplex<T>,
                               int(char jobz, int m, int n, T* a, int lda, R* s, T* u, int ldu,
                                   T* vt, int ldvt, T* work, int lwork, R* rwork, int* iwork),
                               int(char jobz, int m, int n, T* a, int lda, R* s, T* u, int ldu,
                                   T* vt, int ldvt, T* work, int lwork, int* iwork)>)

// Reflectors and rotations.
CPU_ROUTINE(larfg, slarfg, dlarfg, clarfg, zlarfg, void(int n, T* alpha, T* x, int incx, T* tau))
CPU_ROUTINE(lasr, slasr, dlasr, clasr, zlasr,
            void(char side, char pivot, char direct, int m, int n, const R* c, const R* s, T* a,
                 int lda))
CPU_ROUTINE(lar2v, slar2v, dlar2v, clar2v, zlar2v,
            void(int n, T* x, T* y, T* z, int incx, const R* c, const T* s, int incc))
CPU_ROUTINE(largv, slargv, dlargv, clargv, zlargv,
            void(int n, T* x, int incx, T* y, int incy, R* c, int incc))
CPU_ROUTINE(lartv, slartv, dlartv, clartv, zlartv,
            void(int n, T* x, int incx, T* y, int incy, const R* c, const T* s, int incc))

// Runs a routine twice: to ask for its workspace, and with it, of at least `least` elements, behind
// which there are `spare` ones. call(work, size) returns LAPACK's info.
template <class T, class Call>
int withWorkspace(int least, Call call, int spare = 0) {
    T best(0);
    if (const int info = call(&best, -1)) return info;
    const int size = std::max({1, least, int(reinterpret_cast<platform::RealOf<T>&>(best))});
    std::vector<T> work(std::size_t(size + spare), T(0));
    return call(work.data(), size);
}

}  // namespace cpu
