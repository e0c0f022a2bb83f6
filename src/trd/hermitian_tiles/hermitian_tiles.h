// The products of the tiles of a Hermitian matrix with the parts of a vector, for a GPU.
#pragma once

namespace lumo {

// How many tiles the matrix of order n has in a row.
template <class T>
int hermitianTileCount(int n);

// For a Hermitian matrix A of order n > 0, of which the lower triangle is read and no imaginary
// part of the diagonal: part(i, k), of an n x hermitianTileCount(n) matrix without gaps, becomes
// what the k-th tile of the row of tiles that row i is in adds to (A x)(i). All in device memory.
//
// A block has a tile on or below the diagonal, reads it once, and makes its part and its mirror
// image's: no block waits for another, and none goes on for long (Nath, Tomov, Dong and Dongarra,
// SC '11).
template <class T>
void hermitianTiles(int n, const T* a, int lda, const T* x, T* parts);

}  // namespace lumo
