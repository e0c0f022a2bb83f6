// What the launcher and the kernel of hermitianTiles agree on.
#pragma once

namespace lumo {

// The order of a tile, which fits into shared memory; and the rows of lanes that share it.
template <class T>
constexpr int hermitianTile = sizeof(T) <= 8 ? 64 : 32;
constexpr int hermitianTileRows = 4;

}  // namespace lumo
