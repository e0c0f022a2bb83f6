// Where the device source units, compiled by nvcc, hand in their kernels.
#include "cudalib/launch.h"
#include "platform/cuda/kernels.h"

void cudalib::collect(const Instance* instances, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        gpu::collectKernel(instances[i].name, instances[i].stub);
}
