#include "basic/Norms/Norms.h"

#include <algorithm>

#include "basic/Norms/shape.h"
#include "cudalib/launch.h"

template <class T>
void RowSums_k(int m, int n, const T* a, int lda, lumo::RealOf<T>* sums);
template <class T>
void ColumnMaxima_k(int m, const T* a, int lda, lumo::RealOf<T>* maxima);
template <class T>
void HermitianMaxima_k(int n, int first, const T* a, int lda, lumo::RealOf<T>* maxima);

namespace lumo {
namespace {

// A block for each column.
struct MaximaMap {
    int n;
    dim3 blockShape() const { return {maximaLanes, 1, 1}; }
    dim3 gridShape() const { return {unsigned(n), 1, 1}; }
};

}  // namespace

template <class T>
void rowSums(int m, int n, const T* a, int lda, RealOf<T>* sums) {
    if (m > 0) cudalib::launch(SumsMap(m), &RowSums_k<T>, m, n, a, lda, sums);
}

// Columns by as many as every grid takes.
template <class T>
void columnMaxima(int m, int n, const T* a, int lda, RealOf<T>* maxima) {
    for (int j = 0; j < n; j += mostColumns)
        cudalib::launch(MaximaMap{std::min(mostColumns, n - j)}, &ColumnMaxima_k<T>, m,
                        a + std::size_t(j) * std::size_t(lda), lda, maxima + j);
}

template <class T>
void hermitianMaxima(int n, const T* a, int lda, RealOf<T>* maxima) {
    for (int j = 0; j < n; j += mostColumns)
        cudalib::launch(MaximaMap{std::min(mostColumns, n - j)}, &HermitianMaxima_k<T>, n, j, a,
                        lda, maxima);
}

LUMO_INSTANTIATE(rowSums)
LUMO_INSTANTIATE(columnMaxima)
LUMO_INSTANTIATE(hermitianMaxima)

}  // namespace lumo
