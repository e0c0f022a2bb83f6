// Setting a matrix or one of its triangles to a constant (LAPACK xLASET).
#pragma once

namespace lumo {

// Off-diagonal elements of the strictly upper triangle ("U"), the strictly lower one ("L") or
// all of the m x n device matrix ("A", "F") become alpha, the diagonal becomes beta. Letters in
// either case.
//
// Argument errors: -1: uplo, -2: m < 0, -3: n < 0; for a matrix that is not empty -6: null a,
// -7: lda < m.
template <class T>
void LASET(char uplo, int m, int n, T alpha, T beta, T* a, int lda);

}  // namespace lumo
