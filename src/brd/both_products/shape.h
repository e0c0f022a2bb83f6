// What the launcher and the kernel of bothProducts agree on.
#pragma once

namespace lumo {

constexpr int bothProductsLanes = 256;

// Columns that a block multiplies by while they are in the cache.
template <class T>
constexpr int columnsTogether = 32 / int(sizeof(T));

}  // namespace lumo
