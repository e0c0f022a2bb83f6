// Micro-measurements of the machine at hand: copies, launches, products by size, panels.
#pragma once

#include "platform/timeline/machine.h"

namespace lumo {

// What `lumo predict` wants to know of the platform that runs. The library is initialised.
timeline::Machine measuredMachine();

}  // namespace lumo
