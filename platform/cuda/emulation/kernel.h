// The translated kernels by their names.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/cuda/emulation/lane.h"

namespace emulated {

struct Parameter {
    uint32_t offset, size;
};

struct Kernel {
    const char* name;
    Stop (*run)(Lane&);
    std::size_t registerBytes;  // that a lane keeps while others run; 0: it never waits for them
    const Parameter* parameters;
    std::size_t parameterCount;
    uint32_t parameterBytes, sharedBytes;
    uint32_t cluster[3];  // zeros where a launch says it
};

// Made by each translated file, for as long as the library is loaded.
class KernelRegistration {
  public:
    KernelRegistration(const Kernel* kernels, std::size_t count);
};

const Kernel* findKernel(const char* name);

}  // namespace emulated
