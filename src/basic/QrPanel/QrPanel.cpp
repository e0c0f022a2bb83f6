#include "basic/QrPanel/QrPanel.h"

#include "common/complex.h"
#include "cudalib/launch.h"

template <class T>
void QrPanel_k(int m, int n, T* a, int lda, lumo::ReflectorOffer<T>* offers, unsigned* meeting,
               T* tau, int above, T* v, T* w, int ld);

namespace lumo {
namespace {

using PanelMap = cudalib::StaticMap1D<qrPanelLanes>;

// Two sets, so that a block may offer its next sums while others still read the last ones.
std::size_t offersOf(int rows) {
    return std::size_t(2) * std::size_t(cudalib::ceilDiv(rows, qrPanelLanes));
}

}  // namespace

template <class T>
int QrPanel<T>::mostRows() {
    return qrPanelLanes * cudalib::cooperativeBlocks(&QrPanel_k<T>, qrPanelLanes);
}

template <class T>
QrPanel<T>::QrPanel(int rows) : offers_(offersOf(rows)), meeting_(1) {
    cudalib::checkCudaError(cudaMemset(meeting_.data(), 0, sizeof(unsigned)));
}

template <class T>
void QrPanel<T>::factorize(int m, int n, T* a, int lda, T* tau, int above, T* v, T* w,
                           int ld) const {
    cudalib::launchCooperative(PanelMap(m), &QrPanel_k<T>, m, n, a, lda, offers_.data(),
                               meeting_.data(), tau, above, v, w, ld);
}

template class QrPanel<float>;
template class QrPanel<double>;
template class QrPanel<Complex<float>>;
template class QrPanel<Complex<double>>;

}  // namespace lumo
