// The blocked hybrid algorithm of the QR, LQ and RQ factorisations.
#pragma once

namespace lumo {

// A = Q R, L Q or R Q for an m x n device matrix in place, laid out as xGEQRF, xGELQF and xGERQF
// leave it; tau: the min(m, n) scalar factors, in device memory, written on every exit. Throws for
// a failure of memory, device or CPU LAPACK. Arguments are the caller's to check.
//
// Where panels are the device's (lapack/tuning.h), QR is that of lapack/device_qr.h. Elsewhere the
// CPU LAPACK factorises a panel of nb columns (QR) or rows in page-locked memory and forms its
// triangular factor, while the device updates what lies beyond the next panel. QR leaves what
// remains beside the last nb columns or less to the CPU in one piece. Device memory: none if one
// panel is all, else 2 nb^2 + nb (m + n) elements.
template <class T>
void factorizeQr(int m, int n, T* a, int lda, T* tau);
template <class T>
void factorizeLq(int m, int n, T* a, int lda, T* tau);
template <class T>
void factorizeRq(int m, int n, T* a, int lda, T* tau);

}  // namespace lumo
