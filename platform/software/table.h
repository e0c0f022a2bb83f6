#pragma once

#include "platform/table.h"

namespace software {

// The CUDA 3 interface executed by the CPU.
const platform::Table& table();

}  // namespace software
