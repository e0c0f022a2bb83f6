// What the launchers and the kernels of secular agree on.
#pragma once

namespace lumo {

// Roots, and poles, of a block; and lanes that share a vector.
constexpr int secularLanes = 64, vectorLanes = 128;

}  // namespace lumo
