#include "brd/next_column/next_column.h"

#include "brd/next_column/shape.h"
#include "cudalib/launch.h"

template <class T>
void NextColumn_k(int rows, int columns, int count, T* a, int lda, const T* w, int ldw, T* p,
                  int ldp, const T* heads, const T* parts, int ldparts, int partCount,
                  const lumo::RealOf<T>* e, const T* tau, bool update);

namespace lumo {
namespace {

struct RowsMap {
    int rows;
    dim3 blockShape() const { return {nextColumnRows, nextColumnSplits, 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(rows, nextColumnRows)), 1, 1}; }
};

}  // namespace

template <class T>
void nextColumn(int rows, int columns, int count, T* a, int lda, const T* w, int ldw, T* p, int ldp,
                const T* heads, const T* parts, int ldparts, int partCount, const RealOf<T>* e,
                const T* tau, bool update) {
    cudalib::launch(RowsMap{rows}, &NextColumn_k<T>, rows, columns, count, a, lda, w, ldw, p, ldp,
                    heads, parts, ldparts, partCount, e, tau, update);
}

LUMO_INSTANTIATE(nextColumn)

}  // namespace lumo
