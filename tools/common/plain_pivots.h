// Pivots for a solution with factors that nobody has made.
#pragma once

#include <numeric>

#include "lapack/getrs.h"

namespace lumo {

// Those of a factorisation that exchanged nothing, where the routine takes pivots.
template <class Routine>
void fillPivots(Routine&) {}
template <class T>
void fillPivots(Getrs<T>& routine) {
    auto* const ipiv = const_cast<int*>(routine.ipiv);
    std::iota(ipiv, ipiv + routine.n, 1);
}

}  // namespace lumo
