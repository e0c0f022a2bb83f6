// Rank-2k updates of one triangle: syr2k, and her2k of a Hermitian matrix.
#pragma once

#include "routine/description.h"

namespace lumo {

// C := alpha op(A) op(B)' + conj(alpha) op(B) op(A)' + beta C. `transpose` is the letter that a
// caller may give beside "N". Complex elements are always updated as her2k updates them, in syr2k
// as well, with the real part of its beta.
template <class T, class Beta, char transpose>
struct Rank2Update {
    using Element = T;
    static constexpr Family family = Family::blas;
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

    template <class F>
    auto arguments(F f) const {
        return f(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    }
    int badArgument() {
        uplo = upper(uplo);
        trans = upper(trans);
        if (!isOneOf(uplo, "LU")) return 1;
        if (trans != 'N' && trans != transpose) return 2;
        if (n < 0) return 3;
        if (k < 0) return 4;
        if (lda < (plain() ? n : k)) return 7;
        if (ldb < (plain() ? n : k)) return 9;
        if (ldc < n) return 12;
        if (n == 0 || k == 0) return 0;
        return !a ? 6 : !b ? 8 : !c ? 11 : 0;
    }
    bool empty() const { return n == 0; }
    template <class F>
    auto operands(F f) {
        return f(factor(a, lda, plain(), n, k), factor(b, ldb, plain(), n, k),
                 triangle(c, ldc, n, resultOf(beta)));
    }
    void run() const;

  private:
    static constexpr char transposed = isComplex<T> ? 'C' : 'T';
    bool plain() const { return trans == 'N'; }
    const T* part(const T* x, int ld, int j) const;
    void update(int j, int width) const;
    void multiply(int rows, int width, T by, const T* x, int ldx, const T* y, int ldy, T to,
                  T* block) const;
};

template <class T>
using Syr2k = Rank2Update<T, T, 'T'>;
template <class T>
using Her2k = Rank2Update<T, RealOf<T>, 'C'>;

}  // namespace lumo
