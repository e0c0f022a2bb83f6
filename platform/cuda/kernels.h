// The kernels that the plugin was built with, by the names under which the library registers
// them.
#pragma once

#include <string>
#include <vector>

namespace gpu {

void collectKernel(const char* name, const void* stub);
std::vector<std::string> kernelNames();

}  // namespace gpu
