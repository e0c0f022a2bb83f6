// Rank-k updates of one triangle: syrk, and herk of a Hermitian matrix.
#include <algorithm>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "blas/gemm.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

// C := alpha op(A) op(A)' + beta C, where `transpose`, "T" or "C", is the letter of '.
template <class T, class Scalar, char transpose>
struct RankUpdate {
    using Element = T;
    char uplo, trans;
    int n, k;
    Scalar alpha;
    const T* a;
    int lda;
    Scalar beta;
    T* c;
    int ldc;

    bool plain() const { return trans == 'N'; }
    bool empty() const { return n == 0; }

    void check() {
        uplo = upper(uplo);
        trans = upper(trans);
        if (!isOneOf(uplo, "UL")) throwArgumentError(-1);
        if (trans != transpose && trans != 'N') throwArgumentError(-2);
        if (n < 0) throwArgumentError(-3);
        if (k < 0) throwArgumentError(-4);
        if (lda < std::max(1, plain() ? n : k)) throwArgumentError(-7);
        if (ldc < std::max(1, n)) throwArgumentError(-10);
        if (n == 0 || k == 0) return;
        if (!a) throwArgumentError(-6);
        if (!c) throwArgumentError(-9);
    }

    void run() const {
        requireMemory(c);
        if (!large(n, k)) return update(0, n);
        for (int j = 0; j < n; j += blasTuning.block) {
            const int width = std::min(blasTuning.block, n - j);
            update(j, width);
            const int first = uplo == 'L' ? j + width : 0;
            const int rows = uplo == 'L' ? n - first : j;
            if (rows > 0)
                gemm(plain() ? 'N' : transpose, plain() ? transpose : 'N', rows, width, k, T(alpha),
                     part(first), lda, part(j), lda, T(beta), at(c, ldc, first, j), ldc);
        }
    }

    // op(A) from its j-th row on.
    const T* part(int j) const { return plain() ? at(a, lda, j, 0) : at(a, lda, 0, j); }

    // The block of `width` rows and columns on the diagonal.
    void update(int j, int width) const {
        T* cjj = at(c, ldc, j, j);
        if constexpr (transpose == 'C')
            cublas::herk(uplo, trans, width, k, alpha, part(j), lda, beta, cjj, ldc);
        else
            cublas::syrk(uplo, trans, width, k, alpha, part(j), lda, beta, cjj, ldc);
    }

    // C travels both ways even where beta is zero: only one triangle of it is computed.
    lumoStatus runOnHost() const {
        const auto A = input(plain() ? extent(n, k) : extent(k, n), a, lda);
        cudalib::HostBoundMatrix<T> C(extent(n, n), c, ldc, cudalib::uploadAndDownload);
        RankUpdate work = *this;
        useCopy(work.a, work.lda, A);
        useCopy(work.c, work.ldc, C);
        return compute(C, [&] { work.run(); });
    }
};

template <class T>
using Syrk = RankUpdate<T, T, 'T'>;
template <class T>
using Herk = RankUpdate<T, RealOf<T>, 'C'>;

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSsyrk(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                     float beta, float* c, int ldc) {
    return onHost(Syrk<float>{uplo, trans, n, k, alpha, a, lda, beta, c, ldc});
}
lumoStatus lumoDsyrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                     double beta, double* c, int ldc) {
    return onHost(Syrk<double>{uplo, trans, n, k, alpha, a, lda, beta, c, ldc});
}
lumoStatus lumoCsyrk(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                     const lumoFloatComplex* a, int lda, lumoFloatComplex beta, lumoFloatComplex* c,
                     int ldc) {
    return onHost(Syrk<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                       element(beta), element(c), ldc});
}
lumoStatus lumoZsyrk(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                     const lumoDoubleComplex* a, int lda, lumoDoubleComplex beta,
                     lumoDoubleComplex* c, int ldc) {
    return onHost(Syrk<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                        element(beta), element(c), ldc});
}
lumoStatus lumoDeviceSsyrk(char uplo, char trans, int n, int k, float alpha, const float* a,
                           int lda, float beta, float* c, int ldc) {
    return onDevice(Syrk<float>{uplo, trans, n, k, alpha, a, lda, beta, c, ldc});
}
lumoStatus lumoDeviceDsyrk(char uplo, char trans, int n, int k, double alpha, const double* a,
                           int lda, double beta, double* c, int ldc) {
    return onDevice(Syrk<double>{uplo, trans, n, k, alpha, a, lda, beta, c, ldc});
}
lumoStatus lumoDeviceCsyrk(char uplo, char trans, int n, int k, lumoFloatComplex alpha,
                           const lumoFloatComplex* a, int lda, lumoFloatComplex beta,
                           lumoFloatComplex* c, int ldc) {
    return onDevice(Syrk<Complex<float>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                         element(beta), element(c), ldc});
}
lumoStatus lumoDeviceZsyrk(char uplo, char trans, int n, int k, lumoDoubleComplex alpha,
                           const lumoDoubleComplex* a, int lda, lumoDoubleComplex beta,
                           lumoDoubleComplex* c, int ldc) {
    return onDevice(Syrk<Complex<double>>{uplo, trans, n, k, element(alpha), element(a), lda,
                                          element(beta), element(c), ldc});
}

lumoStatus lumoCherk(char uplo, char trans, int n, int k, float alpha, const lumoFloatComplex* a,
                     int lda, float beta, lumoFloatComplex* c, int ldc) {
    return onHost(
        Herk<Complex<float>>{uplo, trans, n, k, alpha, element(a), lda, beta, element(c), ldc});
}
lumoStatus lumoZherk(char uplo, char trans, int n, int k, double alpha, const lumoDoubleComplex* a,
                     int lda, double beta, lumoDoubleComplex* c, int ldc) {
    return onHost(
        Herk<Complex<double>>{uplo, trans, n, k, alpha, element(a), lda, beta, element(c), ldc});
}
lumoStatus lumoDeviceCherk(char uplo, char trans, int n, int k, float alpha,
                           const lumoFloatComplex* a, int lda, float beta, lumoFloatComplex* c,
                           int ldc) {
    return onDevice(
        Herk<Complex<float>>{uplo, trans, n, k, alpha, element(a), lda, beta, element(c), ldc});
}
lumoStatus lumoDeviceZherk(char uplo, char trans, int n, int k, double alpha,
                           const lumoDoubleComplex* a, int lda, double beta, lumoDoubleComplex* c,
                           int ldc) {
    return onDevice(
        Herk<Complex<double>>{uplo, trans, n, k, alpha, element(a), lda, beta, element(c), ldc});
}
