#include "lapack/lu_pipeline.h"

#include <algorithm>

#include "common/element_types.h"
#include "lapack/device_lu_panels.h"
#include "lapack/eliminate.h"
#include "lapack/host_lu_panels.h"

namespace lumo {
namespace {

// Rows and columns are counted from 0, panels by their first column j. What the device is given
// after a panel was started is done beside it, and finds it factorised after it was finished.
template <class T, class Panels>
int factorize(MatrixView<T> a, int m, int n, int nb, Panels&& panels) {
    const int steps = std::min(m, n);
    auto width = [&](int j) { return std::min(nb, steps - j); };
    panels.start(0, nb);
    for (int j = 0; j < steps; j += nb) {
        const int jb = width(j), right = j + jb;
        panels.finish(j, jb);
        panels.interchange(right, n - right, j, jb);
        const int next = right < steps ? width(right) : 0;
        eliminate(a, m, j, jb, right, next);
        if (next > 0) panels.start(right, next);
        eliminate(a, m, j, jb, right + next, n - right - next);
        panels.interchange(0, j, j, jb);
    }
    return panels.result();
}

}  // namespace

template <class T>
int pipelinedGetrf(int m, int n, T* a, int lda, int* ipiv, int nb) {
    const MatrixView<T> matrix{a, lda};
    if (DeviceLuPanels<T>::serve(m))
        return factorize(matrix, m, n, nb, DeviceLuPanels<T>(matrix, m, std::min(m, n), nb, ipiv));
    return factorize(matrix, m, n, nb, HostLuPanels<T>(matrix, m, nb, ipiv));
}

LUMO_INSTANTIATE(pipelinedGetrf)

}  // namespace lumo
