// liblumo-cuda.so: the one table that it exports, and the names of its kernels for a test.
#include "platform/cuda/blas_routines.h"
#include "platform/cuda/device.h"
#include "platform/cuda/kernels.h"

namespace gpu {

#include "platform/make_table.inc"

}  // namespace gpu

extern "C" __attribute__((visibility("default"))) const platform::Table* lumoPlatformTable(
    unsigned version) {
    static const platform::Table table = gpu::makeTable("cuda");
    return version == platform::tableVersion ? &table : nullptr;
}

// Calls visit(context, name) for every kernel of the plugin.
extern "C" __attribute__((visibility("default"))) void lumoPlatformKernels(
    void (*visit)(void*, const char*), void* context) {
    for (const std::string& name : gpu::kernelNames()) visit(context, name.c_str());
}
