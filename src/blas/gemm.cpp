#include "blas/gemm.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/frame.h"
#include "runtime/letters.h"

namespace lumo {
namespace {

// The test for a split multiplies in 32 bits, and what does not fit wraps round.
bool beyondLimit(int ld, int extent) {
    return int(unsigned(ld) * unsigned(extent)) > blasTuning.gemmLimit - 1;
}
// A size of 0 or 1 has no two halves.
bool dividesLimit(int size) {
    return size > 0 && blasTuning.gemmLimit % size == 0;
}

template <class T>
struct Gemm {
    using Element = T;
    char transa, transb;
    int m, n, k;
    T alpha;
    const T* a;
    int lda;
    const T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    bool plainA() const { return transa == 'N'; }
    bool plainB() const { return transb == 'N'; }
    bool empty() const { return m == 0 || n == 0; }

    void foldLetters() {
        transa = upper(transa);
        transb = upper(transb);
    }

    void check() {
        foldLetters();
        if (!isOneOf(transa, "NTC")) throwArgumentError(-1);
        if (!isOneOf(transb, "NTC")) throwArgumentError(-2);
        if (m < 0) throwArgumentError(-3);
        if (n < 0) throwArgumentError(-4);
        if (k < 0) throwArgumentError(-5);
        if (lda < (plainA() ? m : k)) throwArgumentError(-8);
        if (ldb < (plainB() ? k : n)) throwArgumentError(-10);
        if (ldc < m) throwArgumentError(-13);
        if (m == 0 || n == 0 || k == 0) return;
        if (!a) throwArgumentError(-7);
        if (!b) throwArgumentError(-9);
        if (!c) throwArgumentError(-12);
    }

    // Halves what CUBLAS of later devices does not take in one piece: the first half as a product
    // of its own, then the second is looked at again.
    void run() {
        foldLetters();
        if (m > 0 && n > 0) {
            requireMemory(c);
            if (k > 0) {
                requireMemory(a);
                requireMemory(b);
            }
        }
        // Without a product there may be no operands whose halves could be told.
        if (std::min({m, n, k}) > 0 && computeCapability() >= 20)
            while (splitFirstHalf()) {
            }
        cublas::gemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    }

    // The cases ask for divisibility of different things, and only two for multiples of 96. This
    // is on purpose; the results are right in any case. The order of the tests counts, so the first
    // and the last stay apart.
    bool splitFirstHalf() {
        if (plainA() && k >= 2 && beyondLimit(lda, k) && dividesLimit(lda))
            splitProduct();  // NOLINT(bugprone-branch-clone)
        else if (plainB() && n >= 2 && beyondLimit(ldb, n) && dividesLimit(n) && n % 96 == 0)
            splitColumns();
        else if (isOneOf(transa, "TC") && m >= 2 && beyondLimit(lda, m) && dividesLimit(m) &&
                 m % 96 == 0)
            splitRows();
        else if (isOneOf(transb, "TC") && k >= 2 && beyondLimit(ldb, k) && dividesLimit(ldb))
            splitProduct();
        else
            return false;
        return true;
    }

    // By the extent that A and B share: the halves add up in C.
    void splitProduct() {
        const int half = runFirstHalf(&Gemm::k);
        a = plainA() ? at(a, lda, 0, half) : at(a, lda, half, 0);
        b = plainB() ? at(b, ldb, half, 0) : at(b, ldb, 0, half);
        beta = T(1);
    }
    // By columns of B and C.
    void splitColumns() {
        const int half = runFirstHalf(&Gemm::n);
        b = at(b, ldb, 0, half);
        c = at(c, ldc, 0, half);
    }
    // By columns of A, rows of C.
    void splitRows() {
        const int half = runFirstHalf(&Gemm::m);
        a = at(a, lda, 0, half);
        c = at(c, ldc, half, 0);
    }
    int runFirstHalf(int Gemm::*size) {
        const int half = this->*size / 2;
        Gemm first = *this;
        first.*size = half;
        first.run();
        this->*size -= half;
        return half;
    }

    lumoStatus runOnHost() const {
        const auto A = input(plainA() ? extent(m, k) : extent(k, m), a, lda);
        const auto B = input(plainB() ? extent(k, n) : extent(n, k), b, ldb);
        cudalib::HostBoundMatrix<T> C(extent(m, n), c, ldc, resultMode(beta));
        Gemm work = *this;
        useCopy(work.a, work.lda, A);
        useCopy(work.b, work.ldb, B);
        useCopy(work.c, work.ldc, C);
        return compute(C, [&] { work.run(); });
    }
};

// The device interface of gemm alone does not check its arguments: what CUBLAS makes of them is
// the result.
template <class T>
lumoStatus onDevice(Gemm<T> operation) {
    return computeFrame<T>(deviceCall, [&] { operation.run(); });
}

}  // namespace

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc) {
    Gemm<T>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc}.run();
}

template void gemm(char, char, int, int, int, float, const float*, int, const float*, int, float,
                   float*, int);
template void gemm(char, char, int, int, int, double, const double*, int, const double*, int,
                   double, double*, int);
template void gemm(char, char, int, int, int, Complex<float>, const Complex<float>*, int,
                   const Complex<float>*, int, Complex<float>, Complex<float>*, int);
template void gemm(char, char, int, int, int, Complex<double>, const Complex<double>*, int,
                   const Complex<double>*, int, Complex<double>, Complex<double>*, int);

}  // namespace lumo

using namespace lumo;

lumoStatus lumoSgemm(char transa, char transb, int m, int n, int k, float alpha, const float* a,
                     int lda, const float* b, int ldb, float beta, float* c, int ldc) {
    return onHost(Gemm<float>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDgemm(char transa, char transb, int m, int n, int k, double alpha, const double* a,
                     int lda, const double* b, int ldb, double beta, double* c, int ldc) {
    return onHost(Gemm<double>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoCgemm(char transa, char transb, int m, int n, int k, lumoFloatComplex alpha,
                     const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                     lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onHost(Gemm<Complex<float>>{transa, transb, m, n, k, element(alpha), element(a), lda,
                                       element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoZgemm(char transa, char transb, int m, int n, int k, lumoDoubleComplex alpha,
                     const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                     lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onHost(Gemm<Complex<double>>{transa, transb, m, n, k, element(alpha), element(a), lda,
                                        element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceSgemm(char transa, char transb, int m, int n, int k, float alpha,
                           const float* a, int lda, const float* b, int ldb, float beta, float* c,
                           int ldc) {
    return onDevice(Gemm<float>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceDgemm(char transa, char transb, int m, int n, int k, double alpha,
                           const double* a, int lda, const double* b, int ldb, double beta,
                           double* c, int ldc) {
    return onDevice(Gemm<double>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc});
}
lumoStatus lumoDeviceCgemm(char transa, char transb, int m, int n, int k, lumoFloatComplex alpha,
                           const lumoFloatComplex* a, int lda, const lumoFloatComplex* b, int ldb,
                           lumoFloatComplex beta, lumoFloatComplex* c, int ldc) {
    return onDevice(Gemm<Complex<float>>{transa, transb, m, n, k, element(alpha), element(a), lda,
                                         element(b), ldb, element(beta), element(c), ldc});
}
lumoStatus lumoDeviceZgemm(char transa, char transb, int m, int n, int k, lumoDoubleComplex alpha,
                           const lumoDoubleComplex* a, int lda, const lumoDoubleComplex* b, int ldb,
                           lumoDoubleComplex beta, lumoDoubleComplex* c, int ldc) {
    return onDevice(Gemm<Complex<double>>{transa, transb, m, n, k, element(alpha), element(a), lda,
                                          element(b), ldb, element(beta), element(c), ldc});
}
