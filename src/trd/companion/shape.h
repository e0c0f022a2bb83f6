// What the launcher and the kernel of companion agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

constexpr int companionLanes = 512;
using CompanionMap = cudalib::StaticOneBlockMap1D<companionLanes>;

}  // namespace lumo
