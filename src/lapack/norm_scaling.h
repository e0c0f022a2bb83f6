// Matrices whose elements' squares would leave the range are scaled, as LAPACK's drivers do it.
#pragma once

#include <cmath>
#include <vector>

#include "basic/Norms/Norms.h"
#include "blas/cublas.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// The largest of maxima in device memory, or what is no number.
template <class R>
R largestOf(int n, const R* maxima) {
    std::vector<R> all(static_cast<std::size_t>(n));
    cudalib::checkCudaError(
        cudaMemcpy(all.data(), maxima, all.size() * sizeof(R), cudaMemcpyDeviceToHost));
    R most = 0;
    for (R x : all) most = x > most || std::isnan(x) ? x : most;
    return most;
}

// Of |Re| + |Im| of the elements of an m x n device matrix.
template <class T>
RealOf<T> largestElement(int m, int n, const T* a, int lda) {
    const cudalib::Workspace<RealOf<T>> maxima(static_cast<std::size_t>(n));
    columnMaxima(m, n, a, lda, maxima.data());
    return largestOf(n, maxima.data());
}

// What takes a norm from outside of least ... 1 / least to the nearer end. 1 for what is not
// finite.
template <class R>
R scaleFor(R norm, R least) {
    if (norm > 0 && norm < least) return least / norm;
    return std::isfinite(norm) && norm > 1 / least ? 1 / least / norm : R(1);
}

template <class T>
void multiplyMatrix(RealOf<T> factor, int m, int n, T* a, int lda) {
    if (factor == 1 || m == 0) return;
    for (int j = 0; j < n; ++j) cublas::scal(m, T(factor), at(a, lda, 0, j), 1);
}

}  // namespace lumo
