// What the launcher and the kernel of TriangularFactor agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

constexpr int factorRows = 32;
using FactorMap = cudalib::StaticMap1D<factorRows>;

}  // namespace lumo
