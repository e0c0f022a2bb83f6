// The kernels that device source units registered at load, found again by the
// handles that they are launched by.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/table.h"

namespace platform {

// The kernel behind a handle, or null if none (or no more) is registered for it.
const Kernel* findKernel(const void* stub);

// Every kernel registered at present, in order of registration.
std::vector<const Kernel*> registeredKernels();

}  // namespace platform
