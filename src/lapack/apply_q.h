// Products with the Q of a QR, LQ or RQ factorisation that is held as reflectors.
#pragma once

namespace lumo {

// C := op(Q) C (side "L") or C op(Q) (side "R") for an m x n device matrix; trans "N", or "C" for
// Q^H, which is Q^T for real elements. The k reflectors lie in A as the factorisation left them,
// their scalar factors in tau, in device memory.
// As LAPACK xORMQR, xORMLQ and xORMRQ, or xUNM.. for complex elements: with q = m for side "L", n
// for "R", A is q x k for ormqr, k x q for ormlq and ormrq, and k <= q. Arguments are the caller's
// to check.
//
// Blocked. Device memory: 2 nb^2 + nb (m + n) elements, nb no larger than k.
template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc);
template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc);
template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc);

}  // namespace lumo
