// The matrix product, for the exports and for the algorithms of the library.
#pragma once

#include "routine/description.h"

namespace lumo {

// The letter for A^H, which is A^T for real elements.
template <class T>
constexpr char adjointLetter = isComplex<T> ? 'C' : 'T';

// C := alpha op(A) op(B) + beta C.
template <class T>
struct Gemm {
    using Element = T;
    static constexpr Family family = Family::blas;
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

    template <class F>
    auto arguments(F f) const {
        return f(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    }
    int badArgument() {
        foldLetters();
        if (!isOneOf(transa, "NTC")) return 1;
        if (!isOneOf(transb, "NTC")) return 2;
        if (m < 0) return 3;
        if (n < 0) return 4;
        if (k < 0) return 5;
        if (lda < (plainA() ? m : k)) return 8;
        if (ldb < (plainB() ? k : n)) return 10;
        if (ldc < m) return 13;
        if (m == 0 || n == 0 || k == 0) return 0;
        return !a ? 7 : !b ? 9 : !c ? 12 : 0;
    }
    bool empty() const { return m == 0 || n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factor(a, lda, plainA(), m, k), factor(b, ldb, plainB(), k, n),
                 matrix(c, ldc, m, n, resultOf(beta)));
    }
    void run();

  private:
    bool plainA() const { return transa == 'N'; }
    bool plainB() const { return transb == 'N'; }
    void foldLetters() {
        transa = upper(transa);
        transb = upper(transb);
    }
    bool splitFirstHalf();
    void splitProduct();
    void splitColumns();
    void splitRows();
    int runFirstHalf(int Gemm::*size);
};

// The device function does not check its arguments: what CUBLAS makes of them is the result.
template <class T>
constexpr bool deviceChecks<Gemm<T>> = false;

// C := alpha op(A) op(B) + beta C with C m x n, on device matrices, op "N", "T" or "C". Instances:
// the four element types. Arguments are left to CUBLAS to check; a null operand that has elements
// raises a CUDA error. On devices of capability 2.0 and later operands beyond a limit are halved.
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b,
          int ldb, T beta, T* c, int ldc) {
    Gemm<T>{transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc}.run();
}

}  // namespace lumo
