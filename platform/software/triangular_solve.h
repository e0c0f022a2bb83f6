// xTRSM that divides where it must. CPU libraries multiply by the reciprocals of the diagonal, and
// that of a subnormal number may be infinite where the quotient is not.
#pragma once

#include <complex>
#include <cstddef>

#include "platform/blas_arguments.h"
#include "platform/cpu/blas.h"
#include "platform/reciprocal.h"

namespace software {

// As CUBLAS takes it, arguments checked.
template <class T>
struct TriangularSolve {
    char side, uplo, transa, diag;
    int m, n;
    T alpha;
    const T* a;
    std::ptrdiff_t lda;
    T* b;
    std::ptrdiff_t ldb;

    void run() const {
        if (alpha == T(0) || platform::oneOf(diag, "U") || !hasTinyPivot())
            cpu::trsm<T>(side, uplo, transa, diag, m, n, alpha, a, int(lda), b, int(ldb));
        else if (order() == 1)
            divide();
        else
            halve();
    }

  private:
    bool left() const { return platform::oneOf(side, "L"); }
    bool lower() const { return platform::oneOf(uplo, "L"); }
    bool plain() const { return platform::oneOf(transa, "N"); }
    int order() const { return left() ? m : n; }

    bool hasTinyPivot() const {
        for (int i = 0; i < order(); ++i) {
            const T pivot = a[i * (lda + 1)];
            if (platform::reciprocalOverflows(std::real(pivot), std::imag(pivot))) return true;
        }
        return false;
    }

    void divide() const {
        T pivot = *a;
        if constexpr (!std::is_floating_point_v<T>)
            if (platform::oneOf(transa, "C")) pivot = std::conj(pivot);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) b[j * ldb + i] = alpha * b[j * ldb + i] / pivot;
    }

    // One half of the unknowns, their part in the other half's right-hand sides, the other half.
    void halve() const {
        const int h = order() / 2, rest = order() - h;
        const bool leadingFirst = left() == (lower() == plain());
        TriangularSolve leading = *this, trailing = *this;
        (left() ? leading.m : leading.n) = h;
        (left() ? trailing.m : trailing.n) = rest;
        trailing.a = a + h * (lda + 1);
        trailing.b = b + h * (left() ? 1 : ldb);
        TriangularSolve &first = leadingFirst ? leading : trailing,
                        &second = leadingFirst ? trailing : leading;
        first.run();
        const T* between = a + (lower() ? h : h * lda);
        const int extent = leadingFirst ? h : rest;
        if (left())
            cpu::gemm<T>(transa, 'N', second.m, n, extent, T(-1), between, int(lda), first.b,
                         int(ldb), alpha, second.b, int(ldb));
        else
            cpu::gemm<T>('N', transa, m, second.n, extent, T(-1), first.b, int(ldb), between,
                         int(lda), alpha, second.b, int(ldb));
        second.alpha = T(1);
        second.run();
    }
};

}  // namespace software
