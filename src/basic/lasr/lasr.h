// A sequence of plane rotations, applied to a matrix (LAPACK xLASR).
#pragma once

#include "common/complex.h"

namespace lumo {

// A := P A (side "L", P of order m) or A := A P^T (side "R", P of order n) for an m x n device
// matrix. P is the product of rotations [c(k) s(k); -s(k) c(k)] of the planes (k, k + 1); direct
// "F" applies the first one first, "B" the last one. c and s: device memory, real, m - 1 (side "L")
// or n - 1 elements each.
//
// Only pivot "V" (neighbouring planes) is there; "T" and "B" do nothing, successfully. Letters in
// either case. Side "R" is the fast one: its rotations run along whole columns.
//
// Argument errors: -1: side; -2: pivot; -3: direct; and unless m or n is 0 or 1 -4: m < 0,
// -5: n < 0, -6: null c, -7: null s, -8: null a, -9: lda < max(1, m).
template <class T>
void LASR(char side, char pivot, char direct, int m, int n, const RealOf<T>* c, const RealOf<T>* s,
          T* a, int lda);

}  // namespace lumo
