// Products with a symmetric matrix, or a Hermitian one where it is complex: symm and hemm.
#include <algorithm>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "blas/gemm.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

template <class T>
struct Symm {
    using Element = T;
    char side, uplo;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    bool left() const { return side == 'L'; }
    int order() const { return left() ? m : n; }
    bool empty() const { return m == 0 || n == 0; }

    void check() {
        side = upper(side);
        uplo = upper(uplo);
        if (!isOneOf(side, "LR")) throwArgumentError(-1);
        if (!isOneOf(uplo, "UL")) throwArgumentError(-2);
        if (m < 0) throwArgumentError(-3);
        if (n < 0) throwArgumentError(-4);
        if (lda < order()) throwArgumentError(-7);
        if (ldb < m) throwArgumentError(-9);
        if (ldc < m) throwArgumentError(-12);
        if (m == 0 || n == 0) return;
        if (!a) throwArgumentError(-6);
        if (!b) throwArgumentError(-8);
        if (!c) throwArgumentError(-11);
    }

    void run() const {
        if (!large(m, n))
            return cublas::symm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
        for (int j = 0; j < order(); j += blasTuning.block) {
            const int width = std::min(blasTuning.block, order() - j), behind = j + width;
            const T *ajj = at(a, lda, j, j), *bj = slice(b, ldb, j);
            T* cj = slice(c, ldc, j);
            if (left())
                cublas::symm(side, uplo, width, n, alpha, ajj, lda, bj, ldb, beta, cj, ldc);
            else
                cublas::symm(side, uplo, m, width, alpha, ajj, lda, bj, ldb, beta, cj, ldc);
            addOffDiagonal(j, width, 0, j);
            addOffDiagonal(j, width, behind, order() - behind);
        }
    }

    // The rows of B or C from the j-th on, its columns if A stands on the right.
    template <class P>
    P* slice(P* p, int ld, int j) const {
        return left() ? at(p, ld, j, 0) : at(p, ld, 0, j);
    }

    // Adds to block j of C what `count` rows or columns of B from the p-th on contribute. The block
    // of A between them lies off the diagonal, stored as it is or mirrored.
    void addOffDiagonal(int j, int width, int p, int count) const {
        if (count == 0) return;
        const bool before = p < j;
        const T *bp = slice(b, ldb, p), one = T(1);
        T* cj = slice(c, ldc, j);
        if (left()) {
            const bool stored = before == (uplo == 'L');
            const T* block = stored ? at(a, lda, j, p) : at(a, lda, p, j);
            gemm(stored ? 'N' : 'C', 'N', width, n, count, alpha, block, lda, bp, ldb, one, cj,
                 ldc);
        } else {
            const bool stored = before == (uplo == 'U');
            const T* block = stored ? at(a, lda, p, j) : at(a, lda, j, p);
            gemm('N', stored ? 'N' : 'C', m, width, count, alpha, bp, ldb, block, lda, one, cj,
                 ldc);
        }
    }

    lumoStatus runOnHost() const {
        const auto A = input(extent(order(), order()), a, lda);
        const auto B = input(extent(m, n), b, ldb);
        cudalib::HostBoundMatrix<T> C(extent(m, n), c, ldc, resultMode(beta));
        Symm work = *this;
        useCopy(work.a, work.lda, A);
        useCopy(work.b, work.ldb, B);
        useCopy(work.c, work.ldc, C);
        return compute(C, [&] { work.run(); });
    }
};

}  // namespace
}  // namespace lumo

using namespace lumo;

// Complex symm multiplies by a Hermitian matrix, as hemm does.
lumoStatus lumoSsymm(char side, char uplo, int m, int n, float alpha, const float* a, int lda,
                     const float* b, int ldb, float beta, float* c, int ldc) {
    return onHost(Symm<float>{side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDsymm(char side, char uplo, int m, int n, double alpha, const double* a, int lda,
                     const double* b, int ldb, double beta, double* c, int ldc) {
    return onHost(Symm<double>{side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoCsymm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                     const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                     lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onHost(Symm<Complex<float>>{side, uplo, m, n, element(alpha), element(a), lda,
                                       element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoZsymm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                     const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                     lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onHost(Symm<Complex<double>>{side, uplo, m, n, element(alpha), element(a), lda,
                                        element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceSsymm(char side, char uplo, int m, int n, float alpha, const float* a, int lda,
                           const float* b, int ldb, float beta, float* c, int ldc) {
    return onDevice(Symm<float>{side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceDsymm(char side, char uplo, int m, int n, double alpha, const double* a,
                           int lda, const double* b, int ldb, double beta, double* c, int ldc) {
    return onDevice(Symm<double>{side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceCsymm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                           const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                           lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onDevice(Symm<Complex<float>>{side, uplo, m, n, element(alpha), element(a), lda,
                                         element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceZsymm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                           const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                           lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onDevice(Symm<Complex<double>>{side, uplo, m, n, element(alpha), element(a), lda,
                                          element(b), ldb, element(beta), element(c), ldc});
}

lumoStatus lumoChemm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                     const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                     lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onHost(Symm<Complex<float>>{side, uplo, m, n, element(alpha), element(a), lda,
                                       element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoZhemm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                     const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                     lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onHost(Symm<Complex<double>>{side, uplo, m, n, element(alpha), element(a), lda,
                                        element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceChemm(char side, char uplo, int m, int n, lumoFloatComplex alpha,
                           const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                           lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onDevice(Symm<Complex<float>>{side, uplo, m, n, element(alpha), element(a), lda,
                                         element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceZhemm(char side, char uplo, int m, int n, lumoDoubleComplex alpha,
                           const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                           lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onDevice(Symm<Complex<double>>{side, uplo, m, n, element(alpha), element(a), lda,
                                          element(b), ldb, element(beta), element(c), ldc});
}
