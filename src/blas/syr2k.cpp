// Rank-2k updates of one triangle: syr2k, and her2k of a Hermitian matrix.
#include <algorithm>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "blas/gemm.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

// C := alpha op(A) op(B)' + conj(alpha) op(B) op(A)' + beta C. `transpose` is the letter that a
// caller may give beside "N". Complex elements are always updated as her2k updates them, in syr2k
// as well, with the real part of its beta.
template <class T, class Beta, char transpose>
struct Rank2Update {
    using Element = T;
    char uplo, trans;
    int n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    Beta beta;
    T* c;
    int ldc;

    static constexpr char transposed = isComplex<T> ? 'C' : 'T';
    bool plain() const { return trans == 'N'; }
    bool empty() const { return n == 0; }

    void check() {
        uplo = upper(uplo);
        trans = upper(trans);
        if (!isOneOf(uplo, "LU")) throwArgumentError(-1);
        if (trans != 'N' && trans != transpose) throwArgumentError(-2);
        if (n < 0) throwArgumentError(-3);
        if (k < 0) throwArgumentError(-4);
        if (lda < (plain() ? n : k)) throwArgumentError(-7);
        if (ldb < (plain() ? n : k)) throwArgumentError(-9);
        if (ldc < n) throwArgumentError(-12);
        if (n == 0 || k == 0) return;
        if (!a) throwArgumentError(-6);
        if (!b) throwArgumentError(-8);
        if (!c) throwArgumentError(-11);
    }

    void run() const {
        requireMemory(c);
        if (!large(n, k)) return update(0, n);
        for (int j = 0; j < n; j += blasTuning.block) {
            const int width = std::min(blasTuning.block, n - j);
            update(j, width);
            const int first = uplo == 'L' ? j + width : 0;
            const int rows = uplo == 'L' ? n - first : j;
            if (rows == 0) continue;
            multiply(rows, width, alpha, part(a, lda, first), lda, part(b, ldb, j), ldb,
                     T(realPart(beta)), at(c, ldc, first, j));
            multiply(rows, width, conjugate(alpha), part(b, ldb, first), ldb, part(a, lda, j), lda,
                     T(1), at(c, ldc, first, j));
        }
    }

    static RealOf<T> realPart(RealOf<T> x) { return x; }
    template <class R>
    static R realPart(Complex<R> x) {
        return x.re;
    }

    // op(X) from its j-th row on.
    const T* part(const T* x, int ld, int j) const {
        return plain() ? at(x, ld, j, 0) : at(x, ld, 0, j);
    }

    // The block of `width` rows and columns on the diagonal. Without a k, A and B have no elements,
    // and the check takes a leading dimension of 0 for them that CUBLAS does not.
    void update(int j, int width) const {
        cublas::syr2k(uplo, plain() ? 'N' : transposed, width, k, alpha, part(a, lda, j),
                      std::max(1, lda), part(b, ldb, j), std::max(1, ldb), realPart(beta),
                      at(c, ldc, j, j), ldc);
    }

    void multiply(int rows, int width, T by, const T* x, int ldx, const T* y, int ldy, T to,
                  T* block) const {
        gemm(plain() ? 'N' : transposed, plain() ? transposed : 'N', rows, width, k, by, x, ldx, y,
             ldy, to, block, ldc);
    }

    // C travels both ways even where beta is zero: only one triangle of it is computed.
    lumoStatus runOnHost() const {
        const auto shape = plain() ? extent(n, k) : extent(k, n);
        const auto A = input(shape, a, lda);
        const auto B = input(shape, b, ldb);
        cudalib::HostBoundMatrix<T> C(extent(n, n), c, ldc, cudalib::uploadAndDownload);
        Rank2Update work = *this;
        useCopy(work.a, work.lda, A);
        useCopy(work.b, work.ldb, B);
        useCopy(work.c, work.ldc, C);
        return compute(C, [&] { work.run(); });
    }
};

template <class T>
using Syr2k = Rank2Update<T, T, 'T'>;
template <class T>
using Her2k = Rank2Update<T, RealOf<T>, 'C'>;

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSsyr2k(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                      const float* b, int ldb, float beta, float* c, int ldc) {
    return onHost(Syr2k<float>{uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDsyr2k(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                      const double* b, int ldb, double beta, double* c, int ldc) {
    return onHost(Syr2k<double>{uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoCsyr2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                      const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                      lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onHost(Syr2k<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                        element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoZsyr2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                      const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                      lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onHost(Syr2k<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                         element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceSsyr2k(char uplo, char trans, int n, int k, float alpha, const float* a,
                            int lda, const float* b, int ldb, float beta, float* c, int ldc) {
    return onDevice(Syr2k<float>{uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceDsyr2k(char uplo, char trans, int n, int k, double alpha, const double* a,
                            int lda, const double* b, int ldb, double beta, double* c, int ldc) {
    return onDevice(Syr2k<double>{uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceCsyr2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                            const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                            lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onDevice(Syr2k<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                          element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceZsyr2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                            const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                            int ldb, lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onDevice(Syr2k<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                           element(b), ldb, element(beta), element(c), ldc});
}

lumoStatus lumoCher2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                      const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                      float beta, lumoFloatComplex* c, int ldc) {
    return onHost(Her2k<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                        element(b), ldb, beta, element(c), ldc});
}
lumoStatus lumoZher2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                      const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                      double beta, lumoDoubleComplex* c, int ldc) {
    return onHost(Her2k<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                         element(b), ldb, beta, element(c), ldc});
}
lumoStatus lumoDeviceCher2k(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                            const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                            float beta, lumoFloatComplex* c, int ldc) {
    return onDevice(Her2k<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                          element(b), ldb, beta, element(c), ldc});
}
lumoStatus lumoDeviceZher2k(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                            const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b,
                            int ldb, double beta, lumoDoubleComplex* c, int ldc) {
    return onDevice(Her2k<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                           element(b), ldb, beta, element(c), ldc});
}
