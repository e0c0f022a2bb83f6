// Where the device source units, compiled by nvcc, hand in their kernels.
#include "cudalib/kernel.h"
#include "platform/cuda/kernels.h"

void cudalib::collect(const std::vector<Instance>& instances) {
    for (const Instance& instance : instances) gpu::collectKernel(instance.name, instance.stub);
}
