#include "lapack/apply_q.h"

#include <algorithm>

#include "common/element_types.h"
#include "common/matrix.h"
#include "lapack/block_reflector.h"
#include "lapack/host_lapack.h"
#include "lapack/tuning.h"

namespace lumo {
namespace {

template <class T>
void apply(Reflectors kind, char side, char trans, int m, int n, int k, const T* a, int lda,
           const T* tau, T* c, int ldc) {
    if (m <= 0 || n <= 0 || k <= 0) return;
    const bool left = side == 'L', plain = trans == 'N';
    const int order = left ? m : n, across = left ? n : m;
    const int wish =
        platform::panelWidth(platform::Panel::reflectors, platform::letter<T>, order, across);
    const int nb = std::min(wish ? wish : geqrfTuning<T>.current(), k);
    BlockReflector<T> reflector(kind, nb);
    cudalib::Workspace<T> v(std::size_t(nb) * std::size_t(order)),
        work(std::size_t(nb) * std::size_t(across));

    // Q is H_1 H_2 ... (QR), its adjoint ... H_2 H_1 (LQ) or H_1 H_2 ... (RQ) of blocks H: the one
    // next to C goes first.
    const bool forward = kind == Reflectors::ofLq ? left == plain : left != plain;
    const char op = (kind == Reflectors::ofQr) == plain ? 'N' : 'C';
    const int blocks = (k - 1) / nb + 1;
    for (int step = 0; step < blocks; ++step) {
        const int i = nb * (forward ? step : blocks - 1 - step), count = std::min(nb, k - i);
        const bool backward = kind == Reflectors::ofRq;
        // The rows (side "L") or columns of C that the block reaches.
        const int first = backward ? 0 : i, reach = backward ? order - k + i + count : order - i;
        reflector.take(at(a, lda, i, first), lda, reach, count, v.data(), tau + i);
        T* const part = left ? at(c, ldc, first, 0) : at(c, ldc, 0, first);
        reflector.apply(side, op, across, part, ldc, work.data());
    }
}

}  // namespace

template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc) {
    apply(Reflectors::ofQr, side, trans, m, n, k, a, lda, tau, c, ldc);
}
template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc) {
    apply(Reflectors::ofLq, side, trans, m, n, k, a, lda, tau, c, ldc);
}
template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c,
           int ldc) {
    apply(Reflectors::ofRq, side, trans, m, n, k, a, lda, tau, c, ldc);
}

LUMO_INSTANTIATE(ormqr)
LUMO_INSTANTIATE(ormlq)
LUMO_INSTANTIATE(ormrq)

}  // namespace lumo
