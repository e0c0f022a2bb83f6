// What the launchers and the kernels of Norms agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

constexpr int maximaLanes = 256, mostColumns = 65535;
using SumsMap = cudalib::StaticMap1D<128>;

}  // namespace lumo
