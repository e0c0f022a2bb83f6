// Row and column interchanges from a pivot vector (LAPACK xLASWP).
#pragma once

namespace lumo {

// The interchanges of one launch, in the kernel's argument block: entry r is the 0-based row
// (or column) that is exchanged with row (column) start + r.
constexpr int interchangesPerLaunch = 16;
struct swstruct {
    unsigned short row[interchangesPerLaunch];
};
// The same for matrices with more rows than 16 bits count.
struct swstructWide {
    unsigned row[interchangesPerLaunch];
};

// Applies the row interchanges k1, k1 + 1, ..., k2 (1-based) to the n columns of a device
// matrix. ipiv: host memory, 1-based, read from ipiv[k1 - 1] to ipiv[k2 - 1]. incx is there for
// LAPACK's argument order and not used.
//
// Unlike LAPACK's, k1 == k2 does nothing. Argument errors: -1: n < 0; for n > 0 -2: null a,
// -3: lda < 0, -4: k1 < 0, -5: k2 < 0, -6: null ipiv.
template <class T>
void LASWP(int n, T* a, int lda, int k1, int k2, const int* ipiv, int incx);

// The same with columns k1, ..., k2 of a matrix of n rows; -3 is lda < n.
template <class T>
void LASWPCOL(int n, T* a, int lda, int k1, int k2, const int* ipiv, int incx);

}  // namespace lumo
