// The machines that can be asked for by name.
#pragma once

#include <string>
#include <vector>

#include "platform/timeline/machine.h"

namespace timeline {

std::vector<std::string> machineNames();

// The machine of this name, or of the file of this name. Throws a std::runtime_error for one that
// is neither, and for a file that will not do.
Machine machineOf(const std::string& nameOrFile);

}  // namespace timeline
