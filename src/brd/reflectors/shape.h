// What the launchers and the kernels of reflectors agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

constexpr int panelReflectorLanes = 512;
using PanelReflectorMap = cudalib::StaticOneBlockMap1D<panelReflectorLanes>;

}  // namespace lumo
