#pragma once

#include "platform/table.h"

namespace platform {

// The same platform with the time spent in it accounted for by kind, and a report on standard
// error when the process ends (LUMO_PROFILE=1).
const Table& profiled(const Table& table);

}  // namespace platform
