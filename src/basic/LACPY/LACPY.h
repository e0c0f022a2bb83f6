// Copying a matrix or one of its triangles (LAPACK xLACPY).
#pragma once

namespace lumo {

// B := the upper triangle of A with its diagonal ("U"), the lower one ("L"), or all of A ("A",
// "F"), in either case of the letter. A and B are m x n matrices in device memory that do not
// overlap; the rest of B is left alone.
//
// Argument errors: -1: uplo, -2: m < 0, -3: n < 0; for a matrix that is not empty -4: null a,
// -5: lda < m, -6: null b, -7: ldb < m.
template <class T>
void LACPY(char uplo, int m, int n, const T* a, int lda, T* b, int ldb);

}  // namespace lumo
