// The interchanges of a pivot vector, many at once: as the permutation that they come to.
#pragma once

#include "basic/PermuteRows/shape.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// LASWP in ceil((k2 - k1 + 1) / interchangesAtOnce) launches: the rows k1, k1 + 1, ..., k2 (from 1)
// of the n columns of a device matrix are exchanged with rows ipiv[k1 - 1], ..., ipiv[k2 - 1] (host
// memory), one after the other. One interchange alone is applied as well.
template <class T>
void permuteRows(int n, T* a, int lda, int k1, int k2, const int* ipiv);

// The same by a table in device memory, for the n columns of a matrix whose row 0 is the table's.
template <class T>
void permuteRowsThere(int n, T* a, int lda, const RowMoves* moves);

// The interchanges 1, ..., n of an n x nrhs device matrix, or those n, ..., 1 that undo them, in
// one launch for as many columns as its workspace holds, at least one.
template <class T>
class RowPermutation {
  public:
    // Takes all memory that apply() needs.
    RowPermutation(int n, int nrhs);
    void apply(const int* ipiv, T* b, int ldb, bool undo = false) const;

  private:
    int n_, nrhs_, strip_;
    cudalib::Workspace<int> rows_;
    cudalib::Workspace<T> copy_;
};

}  // namespace lumo
