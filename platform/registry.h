// The kernels that device source units registered at load, found again by host stub.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/table.h"

namespace platform {

// The kernel behind a host stub, or null if none (or no more) is registered for it.
const Kernel* findKernel(const void* stub);

// Every kernel registered at present, in order of registration.
std::vector<const Kernel*> registeredKernels();

}  // namespace platform
