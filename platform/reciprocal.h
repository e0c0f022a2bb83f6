#pragma once

#include <cmath>
#include <limits>

#ifdef __CUDACC__
#define PLATFORM_HOST_DEVICE __host__ __device__
#else
#define PLATFORM_HOST_DEVICE
#endif

namespace platform {

template <class Real>
constexpr Real leastInvertible = 1 / std::numeric_limits<Real>::max();

// Whether 1 / (re + i im) is infinite although the number is not zero. CPU libraries divide by the
// pivots of a triangular matrix by multiplying with their reciprocals.
template <class Real>
PLATFORM_HOST_DEVICE bool reciprocalOverflows(Real re, Real im = 0) {
    const Real a = std::abs(re), b = std::abs(im), size = a < b ? b : a;
    return size > 0 && size < leastInvertible<Real>;
}

}  // namespace platform
