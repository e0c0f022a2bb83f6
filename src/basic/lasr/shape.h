// What the launcher and the kernel of lasr agree on.
#pragma once

#include "cudalib/block.h"

namespace lumo {

using ColumnMap = cudalib::StaticMap1D<128>;
using RowMap = cudalib::StaticMap1D<64>;

}  // namespace lumo
