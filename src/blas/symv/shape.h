// What the launcher and the kernels of symv agree on; the kernels' names show the two kinds.
#pragma once

enum uploType { uploLower, uploUpper };
// Bounds may be ignored if the matrix consists of whole tiles.
enum boundsType { boundsIgnored, boundsTested };

namespace lumo {

constexpr int symvTile = 64;

}  // namespace lumo
