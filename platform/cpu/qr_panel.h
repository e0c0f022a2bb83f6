// QR factorisation of a panel of columns, with the triangular factor of its reflectors.
#pragma once

#include <algorithm>

#include "platform/cpu/blas.h"
#include "platform/cpu/lapack.h"
#include "platform/matrix.h"

namespace cpu {

// A CPU library's own routines take so many columns; halves of them would be too small to pay.
constexpr int qrColumns = 16;

// As xGEQRT3 leaves them (m >= n; Elmroth and Gustavson, IBM J. Res. Dev. 44, 2000), but for the
// lower triangle of T, which keeps what is there. A CPU library's xGEQRT3 goes down to single
// columns, and takes up to twice the time.
template <class T>
void qrPanel(int m, int n, T* a, int lda, T* t, int ldt) {
    const platform::MatrixView<T> A{a, lda}, F{t, ldt};
    if (n <= qrColumns) {
        T tau[qrColumns], work[qrColumns];
        geqr2<T>(m, n, a, lda, tau, work);
        larft<T>('F', 'C', m, n, a, lda, tau, t, ldt);
        return;
    }
    const int n1 = (n / 2 + qrColumns - 1) / qrColumns * qrColumns, n2 = n - n1;
    const T one(1), minusOne(-1);
    T *const corner = A.at(n1, n1), *const between = F.at(0, n1);
    qrPanel(m, n1, a, lda, t, ldt);

    // The other columns := Q1^H times them; T's upper right is V1^H times them meanwhile.
    for (int j = 0; j < n2; ++j) std::copy_n(A.at(0, n1 + j), n1, F.at(0, n1 + j));
    trmm<T>('L', 'L', 'C', 'U', n1, n2, one, a, lda, between, ldt);
    gemm<T>('C', 'N', n1, n2, m - n1, one, A.at(n1, 0), lda, corner, lda, one, between, ldt);
    trmm<T>('L', 'U', 'C', 'N', n1, n2, one, t, ldt, between, ldt);
    gemm<T>('N', 'N', m - n1, n2, n1, minusOne, A.at(n1, 0), lda, between, ldt, one, corner, lda);
    trmm<T>('L', 'L', 'N', 'U', n1, n2, one, a, lda, between, ldt);
    for (int j = 0; j < n2; ++j)
        for (int i = 0; i < n1; ++i) A(i, n1 + j) -= F(i, n1 + j);
    qrPanel(m - n1, n2, corner, lda, F.at(n1, n1), ldt);

    // T's upper right := -T1 (V1^H V2) T2.
    for (int j = 0; j < n2; ++j)
        for (int i = 0; i < n1; ++i) F(i, n1 + j) = platform::conjugate(A(n1 + j, i));
    trmm<T>('R', 'L', 'N', 'U', n1, n2, one, corner, lda, between, ldt);
    if (m > n)
        gemm<T>('C', 'N', n1, n2, m - n, one, A.at(n, 0), lda, A.at(n, n1), lda, one, between, ldt);
    trmm<T>('L', 'U', 'N', 'N', n1, n2, minusOne, t, ldt, between, ldt);
    trmm<T>('R', 'U', 'N', 'N', n1, n2, one, F.at(n1, n1), ldt, between, ldt);
}

}  // namespace cpu
