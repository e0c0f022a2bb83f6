#pragma once

#include "platform/table.h"

namespace platform {

// A machine on which CUDA was asked for and cannot run: driver version 0, and every call fails
// with "CUDA driver version is insufficient for CUDA runtime version" (35).
const Table& unavailableTable();

}  // namespace platform
