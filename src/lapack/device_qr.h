// QR factorisation by panels that the device factorises where they lie (basic/QrPanel).
#pragma once

namespace lumo {

// The width of such panels for an m x n matrix; 0 if it is to have the CPU's.
template <class T>
int widthOfDeviceQr(int m, int n);

// As factorizeQr (lapack/orthogonal_factorization.h), m and n above 0, in panels of nb columns. The
// next panel is factorised, on a stream of its own, while the device still updates what lies beyond
// it; the host waits for nothing. Device memory: nb (4 m + n + 2 nb) elements.
template <class T>
void factorizeQrOnDevice(int m, int n, T* a, int lda, T* tau, int nb);

}  // namespace lumo
