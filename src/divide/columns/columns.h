// What divide and conquer does to columns of the matrix of vectors, for all merges of a level.
#pragma once

#include "divide/merge.h"

namespace lumo {

// Applies each merge's rotations, one after the other, to its rows of the matrix. `order`: the
// largest of the `count` merges'. Both lists are in device memory, as those below.
template <class R>
void rotateColumns(int count, int order, const Merge<R>* merges, const ColumnRotation<R>* rotations,
                   R* a, int lda);

// Copies parts of columns of a to b, both of n rows, which do not overlap.
template <class R>
void moveColumns(int n, int count, const ColumnMove* moves, const R* a, int lda, R* b, int ldb);

// x(j) := a(rows(j), j).
template <class R>
void takeElements(int n, const int* rows, const R* a, int lda, R* x);

}  // namespace lumo
