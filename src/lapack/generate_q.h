// The Q of a QR or LQ factorisation as a matrix.
#pragma once

namespace lumo {

// Overwrites an m x n device matrix whose first k columns hold reflectors as factorizeQr left
// them, m >= n >= k, with the first n columns of Q (LAPACK xORGQR, xUNGQR). tau: k scalar factors
// in device memory. Arguments are the caller's to check.
//
// Blocked. Device memory: 2 nb^2 + nb (m + n) elements, nb no larger than k.
template <class T>
void orgqr(int m, int n, int k, T* a, int lda, const T* tau);

// The same for the first k rows of an m x n matrix as factorizeLq left them, n >= m >= k, and the
// first m rows of Q (LAPACK xORGLQ, xUNGLQ).
template <class T>
void orglq(int m, int n, int k, T* a, int lda, const T* tau);

}  // namespace lumo
