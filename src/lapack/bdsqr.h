// Singular values of a bidiagonal matrix, and its rotations on matrices of vectors (LAPACK xBDSQR).
#pragma once

#include "common/complex.h"

namespace lumo {

// B = Q S P^T for the real upper (uplo "U") or lower ("L") bidiagonal matrix of order n with the
// diagonal d and the n - 1 off-diagonals e, all in device memory, as everything here. d becomes
// the singular values, descending and not negative; e is destroyed. The vectors, of the element
// type, are updated: VT := P^T VT (n x ncvt), U := U Q (nru x n), C := Q^T C (n x ncc); a count of
// 0 says that there is no such matrix.
//
// Argument errors: -1: uplo; -2: n < 0; -3: ncvt < 0; -4: nru < 0; -5: ncc < 0; -9: ldvt < 1, or
// ldvt < n for ncvt > 0; -11: ldu < max(1, nru); -13: ldc < 1, or ldc < n for ncc > 0.
// Data errors, raised when what they leave is in device memory:
//   - no convergence in 6 n^2 steps: info is the number of off-diagonals that are not zero; d and e
//     are the upper bidiagonal matrix that the iteration reached, neither positive nor sorted, and
//     the vectors are updated accordingly;
//   - d or e holds a NaN or an infinity: d becomes NaN, e and the vectors are untouched; info is
//     the number of off-diagonals that are not zero, at least 1.
// A failure of the device leaves the vectors undefined.
//
// The scalar iteration runs on the host; d and e cross once each way, each sweep's rotations once,
// asynchronously, and a sweep is one kernel launch for each matrix. Where there is no C, sweeps may
// cross and be launched many at a time (bdsqr_vectors.h). With no vectors at all the values come
// from another iteration, as in xBDSQR (dqds.h), or, on GPUs of capability 7.0 and later, from
// bisection on the device, if that can be had (stebz.h), which always ends. Device memory: 4 (n -
// 1) reals, or 128 (n + 48) for many sweeps at a time, or 5 n for bisection, and a copy of VT
// unless ncvt = n.
template <class T>
void bdsqr(char uplo, int n, int ncvt, int nru, int ncc, RealOf<T>* d, RealOf<T>* e, T* vt,
           int ldvt, T* u, int ldu, T* c, int ldc);

}  // namespace lumo
