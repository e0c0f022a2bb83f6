// What the launcher and the kernel of larfg agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

constexpr int reflectorLanes = 32;
using ReflectorMap = cudalib::StaticOneBlockMap1D<reflectorLanes>;

}  // namespace lumo
