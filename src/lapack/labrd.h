// Reduction of the first rows and columns of a matrix to bidiagonal form (LAPACK xLABRD).
#pragma once

#include "common/complex.h"

namespace lumo {

// Reduces the first nb rows and columns of an m x n device matrix, nb < min(m, n), to upper
// bidiagonal form for m >= n, else to lower. d, e, tauq and taup receive nb entries each; X (m x
// nb) and Y (n x nb) what is needed to update the rest, A22 - V Y^H - X U. V and U are in A, with
// ones where d and e belong, which the update needs. All operands are in device memory; `row` is
// workspace for n elements. Nothing waits for the device.
template <class T>
struct Labrd {
    int m, n, nb;
    T* a;
    int lda;
    RealOf<T>*d, *e;
    T *tauq, *taup;
    T* x;
    int ldx;
    T* y;
    int ldy;
    T* row;

    void run() const;

  private:
    void reduceColumn(int i, int head, RealOf<T>* value) const;
    void reduceRow(int i, int head, RealOf<T>* value) const;
};

}  // namespace lumo
