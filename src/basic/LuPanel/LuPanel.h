// LU factorisation of a narrow panel where it lies, by all of the device's blocks that it takes.
#pragma once

#include "basic/LuPanel/shape.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// Factorises panels of 1 to luPanelColumns columns, m >= n, with LAPACK's choice of pivots
// (xGETF2).
template <class T>
class LuPanel {
  public:
    // The most rows that this device's panels can have; 0 where blocks cannot wait for each other.
    static int mostRows();
    // Takes all memory that panels of so many rows need, one at a time.
    explicit LuPanel(int rows);

    // Of rows `first`, first + 1, ... (from 0) of a matrix, whose element of row `first` is a[0].
    // All in device memory, written when the launch has run: rows of the matrix from 1 on to ipiv,
    // the exchanges that it came to, counted from `first`, to *moves, and the number from 1 of the
    // first zero pivot to *info, INT_MAX if there is none. A panel with `first` > 0 keeps an
    // earlier one.
    void factorize(int m, int n, T* a, int lda, int first, int* ipiv, RowMoves* moves,
                   int* info) const;

    // What a factorised panel of n columns, whose first element is a[0], has to do to columns
    // beside it, in one launch: rows are exchanged in the `left` columns before it and in `right`
    // columns from b on, of the same rows, and these are solved with the panel's triangle.
    static void applyTo(int left, int right, T* b, int n, T* a, int lda, const RowMoves* moves);

  private:
    cudalib::Workspace<PivotOffer<T>> offers_;
    cudalib::Workspace<unsigned> meeting_;
};

}  // namespace lumo
