#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace platform {

// Whether 1 / (re + i im) is infinite although the number is not zero. CPU libraries divide by the
// pivots of a triangular matrix by multiplying with their reciprocals.
template <class Real>
bool reciprocalOverflows(Real re, Real im = 0) {
    const Real size = std::max(std::abs(re), std::abs(im));
    return size > 0 && size < 1 / std::numeric_limits<Real>::max();
}

}  // namespace platform
