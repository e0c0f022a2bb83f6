#include "lapack/lu_pipeline.h"

#include <algorithm>

#include "common/element_types.h"
#include "lapack/device_lu_panels.h"
#include "lapack/host_lu_panels.h"

namespace lumo {
namespace {

// Rows and columns are counted from 0, panels by their first column j. What the device is given
// after a panel was started is done beside it, and finds it factorised after it was finished.
template <class T, class Panels>
int factorize(int m, int n, int nb, Panels&& panels) {
    const int steps = std::min(m, n);
    auto width = [&](int j) { return std::min(nb, steps - j); };
    panels.start(0, width(0));
    for (int j = 0; j < steps; j += nb) {
        const int jb = width(j), right = j + jb;
        panels.finish(j, jb);
        const int next = right < steps ? width(right) : 0;
        panels.updateNext(j, jb, next, n - right);
        if (next > 0) panels.start(right, next);
        panels.updateRest(j, jb, right + next, n - right - next);
        panels.interchange(0, j, j, jb);
    }
    return panels.result();
}

}  // namespace

template <class T>
int pipelinedGetrf(int m, int n, T* a, int lda, int* ipiv, int nb) {
    const MatrixView<T> matrix{a, lda};
    const int steps = std::min(m, n);
    if (const int width = DeviceLuPanels<T>::width(m, steps))
        return factorize<T>(m, n, width, DeviceLuPanels<T>(matrix, m, steps, width, ipiv));
    return factorize<T>(m, n, nb, HostLuPanels<T>(matrix, m, nb, ipiv));
}

LUMO_INSTANTIATE(pipelinedGetrf)

}  // namespace lumo
