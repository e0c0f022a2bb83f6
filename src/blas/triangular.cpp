// Products with a triangular matrix and with its inverse: trmm and trsm.
#include <algorithm>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

enum class Triangular { product, solution };

template <class T, Triangular kind>
struct TriangularOperation {
    using Element = T;
    char side, uplo, transa, diag;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    T* b;
    int ldb;

    int order() const { return side == 'L' ? m : n; }
    bool empty() const { return m == 0 || n == 0; }

    // trmm wants leading dimensions of at least 1, trsm takes 0 for an empty matrix.
    void check() {
        constexpr int least = kind == Triangular::product ? 1 : 0;
        side = upper(side);
        uplo = upper(uplo);
        transa = upper(transa);
        diag = upper(diag);
        if (!isOneOf(side, "LR")) throwArgumentError(-1);
        if (!isOneOf(uplo, "UL")) throwArgumentError(-2);
        if (!isOneOf(transa, "NTC")) throwArgumentError(-3);
        if (!isOneOf(diag, "UN")) throwArgumentError(-4);
        if (m < 0) throwArgumentError(-5);
        if (n < 0) throwArgumentError(-6);
        if (lda < std::max(least, order())) throwArgumentError(-9);
        if (ldb < std::max(least, m)) throwArgumentError(-11);
        if (m == 0 || n == 0) return;
        if (!a) throwArgumentError(-8);
        if (!b) throwArgumentError(-10);
    }

    void run() const {
        if constexpr (kind == Triangular::product)
            cublas::trmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
        else
            cublas::trsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
    }

    lumoStatus runOnHost() const {
        const auto A = input(extent(order(), order()), a, lda);
        cudalib::HostBoundMatrix<T> B(extent(m, n), b, ldb, cudalib::uploadAndDownload);
        TriangularOperation work = *this;
        useCopy(work.a, work.lda, A);
        useCopy(work.b, work.ldb, B);
        return compute(B, [&] { work.run(); });
    }
};

template <class T>
using Trmm = TriangularOperation<T, Triangular::product>;
template <class T>
using Trsm = TriangularOperation<T, Triangular::solution>;

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoStrmm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                     const float* a, int lda, float* b, int ldb) {
    return onHost(Trmm<float>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDtrmm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                     const double* a, int lda, double* b, int ldb) {
    return onHost(Trmm<double>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoCtrmm(char side, char uplo, char transa, char diag, int m, int n,
                     lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                     lumoFloatComplex* b, int ldb) {
    return onHost(Trmm<Complex<float>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                       lda, element(b), ldb});
}
lumoStatus lumoZtrmm(char side, char uplo, char transa, char diag, int m, int n,
                     lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                     lumoDoubleComplex* b, int ldb) {
    return onHost(Trmm<Complex<double>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                        lda, element(b), ldb});
}
lumoStatus lumoDeviceStrmm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                           const float* a, int lda, float* b, int ldb) {
    return onDevice(Trmm<float>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDeviceDtrmm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                           const double* a, int lda, double* b, int ldb) {
    return onDevice(Trmm<double>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDeviceCtrmm(char side, char uplo, char transa, char diag, int m, int n,
                           lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                           lumoFloatComplex* b, int ldb) {
    return onDevice(Trmm<Complex<float>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                         lda, element(b), ldb});
}
lumoStatus lumoDeviceZtrmm(char side, char uplo, char transa, char diag, int m, int n,
                           lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                           lumoDoubleComplex* b, int ldb) {
    return onDevice(Trmm<Complex<double>>{side, uplo, transa, diag, m, n, element(alpha),
                                          element(a), lda, element(b), ldb});
}

lumoStatus lumoStrsm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                     const float* a, int lda, float* b, int ldb) {
    return onHost(Trsm<float>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDtrsm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                     const double* a, int lda, double* b, int ldb) {
    return onHost(Trsm<double>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoCtrsm(char side, char uplo, char transa, char diag, int m, int n,
                     lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                     lumoFloatComplex* b, int ldb) {
    return onHost(Trsm<Complex<float>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                       lda, element(b), ldb});
}
lumoStatus lumoZtrsm(char side, char uplo, char transa, char diag, int m, int n,
                     lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                     lumoDoubleComplex* b, int ldb) {
    return onHost(Trsm<Complex<double>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                        lda, element(b), ldb});
}
lumoStatus lumoDeviceStrsm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                           const float* a, int lda, float* b, int ldb) {
    return onDevice(Trsm<float>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDeviceDtrsm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                           const double* a, int lda, double* b, int ldb) {
    return onDevice(Trsm<double>{side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb});
}
lumoStatus lumoDeviceCtrsm(char side, char uplo, char transa, char diag, int m, int n,
                           lumoFloatComplex alpha, const lumoFloatComplex* a, int lda,
                           lumoFloatComplex* b, int ldb) {
    return onDevice(Trsm<Complex<float>>{side, uplo, transa, diag, m, n, element(alpha), element(a),
                                         lda, element(b), ldb});
}
lumoStatus lumoDeviceZtrsm(char side, char uplo, char transa, char diag, int m, int n,
                           lumoDoubleComplex alpha, const lumoDoubleComplex* a, int lda,
                           lumoDoubleComplex* b, int ldb) {
    return onDevice(Trsm<Complex<double>>{side, uplo, transa, diag, m, n, element(alpha),
                                          element(a), lda, element(b), ldb});
}
