#include "lapack/stebz.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "common/element_types.h"
#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/bdsqr_scalars.h"
#include "lapack/tuning.h"
#include "trd/bisection/bisection.h"

namespace lumo {
namespace {

template <class R>
R largestOf(const std::vector<R>& x) {
    R most = 0;
    for (const R element : x) most = std::max(most, std::abs(element));
    return most;
}

// For each value as many as the device has lanes for.
template <class R>
int candidatesFor(int count) {
    const int lanes = stebzLanesOfDevice<R>();
    int candidates = 1;
    while (candidates < mostCandidates && count <= lanes / (2 * candidates)) candidates *= 2;
    return candidates;
}

}  // namespace

// The matrix is scaled by a power of two, and so are its values.
template <class R>
void stebz(int n, const R* d, const R* e, int first, int count, R* values) {
    std::vector<R> diagonal(d, d + n), squares(e, e + (n - 1));
    squares.insert(squares.begin(), R(0));
    int exponent = 0;
    std::frexp(std::max(largestOf(diagonal), largestOf(squares)), &exponent);
    for (R& x : diagonal) x = std::ldexp(x, -exponent);
    for (R& x : squares) {
        x = std::ldexp(x, -exponent);
        x *= x;
    }

    const auto copy = [](R* to, const R* from, std::size_t count, cudaMemcpyKind kind) {
        cudalib::checkCudaError(cudaMemcpy(to, from, count * sizeof(R), kind));
    };
    const cudalib::Workspace<R> matrix(2 * diagonal.size()), found(static_cast<std::size_t>(count));
    copy(matrix.data(), diagonal.data(), diagonal.size(), cudaMemcpyHostToDevice);
    copy(matrix.data() + n, squares.data(), squares.size(), cudaMemcpyHostToDevice);
    bisection(n, matrix.data(), matrix.data() + n, first, count, candidatesFor<R>(count),
              found.data());
    copy(values, found.data(), std::size_t(count), cudaMemcpyDeviceToHost);
    for (int k = 0; k < count; ++k) {
        values[k] = std::ldexp(values[k], exponent);
        if (k > 0) values[k] = std::max(values[k], values[k - 1]);  // arithmetic not quite monotone
    }
}

// They are the upper half of the eigenvalues of the matrix of order 2 n without a diagonal whose
// off-diagonals are d(0), e(0), d(1), ... (Golub and Kahan, SIAM J. Numer. Anal. 2, 1965), which
// are known as accurately as its elements (Demmel and Kahan, SIAM J. Sci. Stat. Comput. 11, 1990).
template <class R>
bool bidiagonalStebz(int n, R* d, R* e) {
    std::vector<R> off;
    for (int i = 0; i < n; ++i) {
        off.push_back(d[i]);
        if (i < n - 1) off.push_back(e[i]);
    }
    const R most = largestOf(off), least = most * 2 * std::sqrt(safeMinimum<R>);
    if (std::any_of(off.begin(), off.end(), [&](R x) { return x != 0 && std::abs(x) < least; }))
        return false;
    const std::vector<R> zeros(2 * std::size_t(n));
    std::vector<R> values(static_cast<std::size_t>(n));
    stebz(2 * n, zeros.data(), off.data(), n, n, values.data());
    // What bisection takes for zero, the least normal number beside the largest element, is to be
    // less than its rounding.
    if (values[0] <= most * (4 * safeMinimum<R> / roundingUnit<R>)) return false;
    std::copy(values.rbegin(), values.rend(), d);
    std::fill(e, e + (n - 1), R(0));
    return true;
}

LUMO_INSTANTIATE_REAL(stebz)
LUMO_INSTANTIATE_REAL(bidiagonalStebz)

}  // namespace lumo
