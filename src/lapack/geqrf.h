// QR factorisation (LAPACK xGEQRF).
#pragma once

namespace lumo {

// Raises the argument errors of geqrf: -1: m < 0; -2: n < 0; -4: lda < max(1, m); and for a matrix
// that is neither empty nor 1 x 1 -3: null a, -5: null tau.
void checkGeqrf(int m, int n, const void* a, int lda, const void* tau);

// The factorisation with that check; see factorizeQr.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau);

}  // namespace lumo
