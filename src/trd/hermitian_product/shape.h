// What the launcher and the kernels of hermitianProduct agree on.
#pragma once

namespace lumo {

constexpr int hermitianProductLanes = 256;

// Columns of A that a block multiplies by together.
template <class T>
constexpr int hermitianColumns = sizeof(T) <= 8 ? 4 : 2;

}  // namespace lumo
