// Matrix-vector products.
#include <algorithm>
#include <climits>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

template <class T>
struct Gemv {
    using Element = T;
    char trans;
    int m, n;
    T alpha;
    const T* a;
    int lda;
    const T* x;
    int incx;
    T beta;
    T* y;
    int incy;

    // Null pointers are refused even where m or n is 0, unlike everywhere else.
    void check() {
        trans = upper(trans);
        if (!isOneOf(trans, "NTC")) throwArgumentError(-1);
        if (m < 0) throwArgumentError(-2);
        if (n < 0) throwArgumentError(-3);
        if (!a) throwArgumentError(-5);
        if (lda < std::max(1, m)) throwArgumentError(-6);
        if (!x) throwArgumentError(-7);
        if (!y) throwArgumentError(-10);
    }

    bool empty() const { return false; }

    void run() const { cublas::gemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy); }

    lumoStatus runOnHost() const {
        using cudalib::CudaAllocator;
        using cudalib::HostBoundMatrix;
        // CUBLAS refuses increments of zero before it looks at any operand.
        if (incx == 0 || incy == 0)
            return guarded([&] {
                run();
                cudalib::synchronizeAndCheck();
            });
        const int lengthX = trans == 'N' ? n : m, lengthY = trans == 'N' ? m : n;
        const auto A = input(extent(m, n), a, lda);
        const HostBoundMatrix<T, CudaAllocator> X(extent(1, lengthX), const_cast<T*>(x), gap(incx),
                                                  cudalib::upload);
        HostBoundMatrix<T, CudaAllocator> Y(extent(1, lengthY), y, gap(incy),
                                            cudalib::uploadAndDownload);
        return compute(Y, [&] {
            cublas::gemv(trans, m, n, alpha, static_cast<const T*>(A.data()), A.leadingDimension(),
                         static_cast<const T*>(X.data()), direction(incx) * X.leadingDimension(),
                         beta, Y.data(), direction(incy) * Y.leadingDimension());
        });
    }

    // A vector lies in memory from its least address on, whichever way its elements are counted.
    // The copy on the device keeps this order and leaves out what lies between.
    static int gap(int increment) {
        return increment < 0 ? -std::max(increment, -INT_MAX) : increment;
    }
    static int direction(int increment) { return increment < 0 ? -1 : 1; }
};

}  // namespace
}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgemv(char trans, int m, int n, float alpha, const float* a, int lda, const float* x,
                     int incx, float beta, float* y, int incy) {
    return onHost(Gemv<float>{trans, m, n, alpha, a, lda, x, incx, beta, y, incy});
}
lumoStatus lumoDgemv(char trans, int m, int n, double alpha, const double* a, int lda,
                     const double* x, int incx, double beta, double* y, int incy) {
    return onHost(Gemv<double>{trans, m, n, alpha, a, lda, x, incx, beta, y, incy});
}
lumoStatus lumoCgemv(char trans, int m, int n, lumoFloatComplex alpha, const lumoFloatComplex* a,
                     int lda, const lumoFloatComplex* x, int incx, lumoFloatComplex beta,
                     lumoFloatComplex* y, int incy) {
    return onHost(Gemv<Complex<float>>{trans, m, n, element(alpha), element(a), lda, element(x),
                                       incx, element(beta), element(y), incy});
}
lumoStatus lumoZgemv(char trans, int m, int n, lumoDoubleComplex alpha, const lumoDoubleComplex* a,
                     int lda, const lumoDoubleComplex* x, int incx, lumoDoubleComplex beta,
                     lumoDoubleComplex* y, int incy) {
    return onHost(Gemv<Complex<double>>{trans, m, n, element(alpha), element(a), lda, element(x),
                                        incx, element(beta), element(y), incy});
}
lumoStatus lumoDeviceSgemv(char trans, int m, int n, float alpha, const float* a, int lda,
                           const float* x, int incx, float beta, float* y, int incy) {
    return onDevice(Gemv<float>{trans, m, n, alpha, a, lda, x, incx, beta, y, incy});
}
lumoStatus lumoDeviceDgemv(char trans, int m, int n, double alpha, const double* a, int lda,
                           const double* x, int incx, double beta, double* y, int incy) {
    return onDevice(Gemv<double>{trans, m, n, alpha, a, lda, x, incx, beta, y, incy});
}
lumoStatus lumoDeviceCgemv(char trans, int m, int n, lumoFloatComplex alpha,
                           const lumoFloatComplex* a, int lda, const lumoFloatComplex* x, int incx,
                           lumoFloatComplex beta, lumoFloatComplex* y, int incy) {
    return onDevice(Gemv<Complex<float>>{trans, m, n, element(alpha), element(a), lda, element(x),
                                         incx, element(beta), element(y), incy});
}
lumoStatus lumoDeviceZgemv(char trans, int m, int n, lumoDoubleComplex alpha,
                           const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* x,
                           int incx, lumoDoubleComplex beta, lumoDoubleComplex* y, int incy) {
    return onDevice(Gemv<Complex<double>>{trans, m, n, element(alpha), element(a), lda, element(x),
                                          incx, element(beta), element(y), incy});
}
