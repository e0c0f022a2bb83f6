#include "basic/LuPanel/LuPanel.h"

#include "cudalib/launch.h"

template <class T>
void LuPanel_k(int m, int n, T* a, int lda, int first, lumo::PivotOffer<T>* offers,
               unsigned* meeting, int* ipiv, lumo::RowMoves* moves, int* info);

template <class T>
void LuBeside_k(int left, int right, T* b, int n, T* a, int lda, const lumo::RowMoves* moves);

namespace lumo {
namespace {

using PanelMap = cudalib::StaticMap1D<luPanelLanes>;

struct BesideMap {
    int columns;
    dim3 blockShape() const { return {movedAtOnce, 1, 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(columns, columnsOfBlock)), 1, 1}; }
};

// Two sets, so that a block may offer its next pivot while others still read the last ones.
std::size_t offersOf(int rows) {
    return std::size_t(2) * std::size_t(cudalib::ceilDiv(rows, luPanelLanes));
}

}  // namespace

template <class T>
int LuPanel<T>::mostRows() {
    return luPanelLanes * cudalib::cooperativeBlocks(&LuPanel_k<T>, luPanelLanes);
}

template <class T>
LuPanel<T>::LuPanel(int rows) : offers_(offersOf(rows)), meeting_(1) {
    cudalib::checkCudaError(cudaMemset(meeting_.data(), 0, sizeof(unsigned)));
}

template <class T>
void LuPanel<T>::factorize(int m, int n, T* a, int lda, int first, int* ipiv, RowMoves* moves,
                           int* info) const {
    cudalib::launchCooperative(PanelMap(m), &LuPanel_k<T>, m, n, a, lda, first, offers_.data(),
                               meeting_.data(), ipiv, moves, info);
}

template <class T>
void LuPanel<T>::applyTo(int left, int right, T* b, int n, T* a, int lda, const RowMoves* moves) {
    if (right == 0) b = a;  // which need not point into the matrix
    if (left + right > 0)
        cudalib::launch(BesideMap{left + right}, &LuBeside_k<T>, left, right, b, n, a, lda, moves);
}

template class LuPanel<float>;
template class LuPanel<double>;
template class LuPanel<Complex<float>>;
template class LuPanel<Complex<double>>;

}  // namespace lumo
