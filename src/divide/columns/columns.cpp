#include "divide/columns/columns.h"

#include "cudalib/launch.h"
#include "divide/columns/shape.h"

template <class R>
void RotateColumns_k(int count, const lumo::Merge<R>* merges,
                     const lumo::ColumnRotation<R>* rotations, R* a, int lda);
template <class Map, class R>
void MoveColumns_k(int count, const lumo::ColumnMove* moves, const R* a, int lda, R* b, int ldb);
template <class Map, class R>
void TakeElements_k(int n, const int* rows, const R* a, int lda, R* x);

namespace lumo {
namespace {

// Blocks of rows by merges.
struct RowsOfMergesMap {
    int order, merges;
    dim3 blockShape() const { return {rotatedRows, 1, 1}; }
    dim3 gridShape() const {
        return {unsigned(cudalib::ceilDiv(order, rotatedRows)), unsigned(merges), 1};
    }
};

}  // namespace

template <class R>
void rotateColumns(int count, int order, const Merge<R>* merges, const ColumnRotation<R>* rotations,
                   R* a, int lda) {
    cudalib::launch(RowsOfMergesMap{order, count}, &RotateColumns_k<R>, count, merges, rotations, a,
                    lda);
}

template <class R>
void moveColumns(int n, int count, const ColumnMove* moves, const R* a, int lda, R* b, int ldb) {
    if (count > 0)
        cudalib::launch(cudalib::Map2D(n, count), &MoveColumns_k<cudalib::Map2D, R>, count, moves,
                        a, lda, b, ldb);
}

template <class R>
void takeElements(int n, const int* rows, const R* a, int lda, R* x) {
    cudalib::launch(cudalib::Map1D(n), &TakeElements_k<cudalib::Map1D, R>, n, rows, a, lda, x);
}

LUMO_INSTANTIATE_REAL(rotateColumns)
LUMO_INSTANTIATE_REAL(moveColumns)
LUMO_INSTANTIATE_REAL(takeElements)

}  // namespace lumo
