// What the launcher and the kernels of hermitianProduct agree on.
#pragma once

#include "common/complex.h"

namespace lumo {

constexpr int hermitianProductLanes = 256;

// Columns of A that a block multiplies by together.
template <class T>
constexpr int hermitianColumns = sizeof(T) == 16 ? 2 : 4;

}  // namespace lumo
