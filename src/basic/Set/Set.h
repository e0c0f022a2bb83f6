// Setting matrices, vectors, triangles and single elements in device memory to K, 0 or 1.
#pragma once

namespace lumo {

// Every element := K. Nothing unless m >= 1, n >= 1 and lda >= 1.
template <int K, class T>
void setMatrix(int m, int n, T* a, int lda);

// Every element := K. Nothing unless n >= 1 and incx >= 1.
template <int K, class T>
void setVector(int n, T* x, int incx);

template <int K, class T>
void setElement(T* p);

// Makes a triangular matrix of an m x n one: the strict triangle opposite to `uplo` becomes K:
// the strictly lower one for "U", the strictly upper one for any other letter. The diagonal
// becomes 1 for diag "U" or "Z" and is left alone otherwise. Letters count as given: "u" is not
// "U".
template <int K, class T>
void setTriangle(char uplo, char diag, int m, int n, T* a, int lda);

}  // namespace lumo
