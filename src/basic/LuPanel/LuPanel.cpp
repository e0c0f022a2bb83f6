#include "basic/LuPanel/LuPanel.h"

#include "cudalib/launch.h"

template <class T>
void LuPanel_k(int m, int n, T* a, int lda, int first, lumo::PivotOffer<T>* offers,
               unsigned* meeting, int* ipiv, lumo::RowMoves* moves, int* info);

namespace lumo {
namespace {

using PanelMap = cudalib::StaticMap1D<luPanelLanes>;

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

template class LuPanel<float>;
template class LuPanel<double>;
template class LuPanel<Complex<float>>;
template class LuPanel<Complex<double>>;

}  // namespace lumo
