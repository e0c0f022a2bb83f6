// Kernels: how they become known, and their launches.
#include <cuda_runtime_api.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <unordered_map>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/settings.h"
#include "platform/cuda/emulation/streams.h"
#include "platform/cuda/emulation/team.h"

namespace emulated {
namespace {

std::unordered_map<std::string, const Kernel*>& kernels() {
    static auto* byName = new std::unordered_map<std::string, const Kernel*>;
    return *byName;
}

// What the program's own code launches a kernel by.
struct Handle {
    std::string name;
    uint32_t sharedBytes = sharedBytesOfBlock;  // that it may have
};
std::unordered_map<const void*, Handle>& handles() {
    static auto* byAddress = new std::unordered_map<const void*, Handle>;
    return *byAddress;
}

void run(Launch& launch) {
    if (failsNow("kernel")) return setStickyError(settings().failCode);
    uint64_t workspace = 0;
    if (launch.cooperative) {
        constexpr std::size_t bytes = 64;
        workspace = deviceMemory().take(bytes, launch.device);
        std::memset(deviceMemory().reach(workspace), 0, bytes);
        launch.shape.gridWorkspace = workspace;
    }
    try {
        Team(launch).run();
    } catch (const KernelFault&) {
    }
    if (workspace) deviceMemory().giveBack(workspace);
}

bool validBlock(const uint32_t (&b)[3]) {
    return b[0] && b[1] && b[2] && b[0] <= 1024 && b[1] <= 1024 && b[2] <= 64 &&
           uint64_t(b[0]) * b[1] * b[2] <= 1024;
}
bool validGrid(const Shape& s) {
    const uint32_t* g = s.nctaid;
    if (!g[0] || !g[1] || !g[2] || g[0] > 0x7fffffffu || g[1] > 65535 || g[2] > 65535) return false;
    for (int i = 0; i < 3; ++i)
        if (!s.cluster[i] || g[i] % s.cluster[i]) return false;
    return s.blocksInCluster() <= 8;
}

// How many blocks a multiprocessor holds, registers apart, which PTX does not tell.
int blocksAtOnce(uint32_t lanes, std::size_t sharedBytes) {
    const std::size_t byShared = sharedBytes ? std::size_t(sharedBytesAtMost) / sharedBytes : 32;
    return int(std::min({std::size_t(2048 / std::max(lanes, 1u)), byShared, std::size_t(32)}));
}

cudaError_t launchKernel(const void* address, Shape shape, void** arguments, std::size_t dynamic,
                         cudaStream_t handle, bool cooperative) {
    const Call call;
    if (stickyError()) return result(0);
    auto known = handles().find(address);
    const Kernel* kernel =
        known == handles().end() ? nullptr : findKernel(known->second.name.c_str());
    if (!kernel) {
        found(Kind::launch, "a kernel that nobody registered");
        return result(cudaErrorInvalidDeviceFunction);
    }
    count("launch");
    count(std::string("launch ") + kernel->name);
    countLargest(std::string("lanes ") + kernel->name, shape.lanes());
    if (kernel->cluster[0]) std::copy_n(kernel->cluster, 3, shape.cluster);
    if (!validBlock(shape.ntid) || !validGrid(shape)) {
        found(Kind::launch, "a shape that CUDA refuses: grid %u,%u,%u block %u,%u,%u, %s",
              shape.nctaid[0], shape.nctaid[1], shape.nctaid[2], shape.ntid[0], shape.ntid[1],
              shape.ntid[2], kernel->name);
        return result(cudaErrorInvalidConfiguration);
    }
    const std::size_t shared = kernel->sharedBytes + dynamic;
    if (shared > known->second.sharedBytes) {
        found(Kind::launch, "%zu bytes of shared memory, %s", shared, kernel->name);
        return result(cudaErrorInvalidValue);
    }
    if (cooperative &&
        shape.blocks() > uint64_t(multiprocessors) * blocksAtOnce(shape.lanes(), shared)) {
        found(Kind::launch, "a cooperative launch of more blocks than run at once, %s",
              kernel->name);
        return result(cudaErrorCooperativeLaunchTooLarge);
    }
    Stream* stream = streamOf(handle);
    if (!stream || stream->device != currentDevice()) {
        if (stream) found(Kind::device, "a launch on a stream of another device");
        return result(cudaErrorInvalidResourceHandle);
    }
    Launch launch{
        kernel,           shape,          std::vector<unsigned char>(kernel->parameterBytes),
        uint32_t(shared), stream->device, cooperative};
    for (std::size_t i = 0; i < kernel->parameterCount; ++i)
        std::memcpy(launch.parameters.data() + kernel->parameters[i].offset, arguments[i],
                    kernel->parameters[i].size);
    submit(*stream, [launch]() mutable { run(launch); });
    return cudaSuccess;  // whatever the kernel has come to meanwhile
}

Shape shapeOf(dim3 grid, dim3 block) {
    Shape s;
    const uint32_t g[3] = {grid.x, grid.y, grid.z}, b[3] = {block.x, block.y, block.z};
    std::copy_n(g, 3, s.nctaid);
    std::copy_n(b, 3, s.ntid);
    return s;
}

// What <<< >>> leaves to the function that launches.
struct Configuration {
    dim3 grid, block;
    std::size_t shared;
    cudaStream_t stream;
};
thread_local Configuration configuration;

}  // namespace

KernelRegistration::KernelRegistration(const Kernel* list, std::size_t n) {
    // The first of a name stays, so that another library can stand before one.
    for (std::size_t i = 0; i < n; ++i) kernels().emplace(list[i].name, &list[i]);
}

const Kernel* findKernel(const char* name) {
    auto it = kernels().find(name);
    return it == kernels().end() ? nullptr : it->second;
}

}  // namespace emulated

using namespace emulated;

extern "C" {

// Of a "fat binary" only the names count: the translated code stands in for it.
void** __cudaRegisterFatBinary(void*) {
    static void* handle;
    return &handle;
}
void __cudaRegisterFatBinaryEnd(void**) {}
void __cudaUnregisterFatBinary(void**) {}
void __cudaRegisterFunction(void**, const char* address, char*, const char* name, int, uint3*,
                            uint3*, dim3*, dim3*, int*) {
    const Call call;
    handles()[address] = {name};
}

unsigned __cudaPushCallConfiguration(dim3 grid, dim3 block, std::size_t shared, void* stream) {
    configuration = {grid, block, shared, static_cast<cudaStream_t>(stream)};
    return 0;
}
cudaError_t __cudaPopCallConfiguration(dim3* grid, dim3* block, std::size_t* shared, void* stream) {
    *grid = configuration.grid;
    *block = configuration.block;
    *shared = configuration.shared;
    *static_cast<cudaStream_t*>(stream) = configuration.stream;
    return cudaSuccess;
}
cudaError_t __cudaGetKernel(cudaKernel_t* kernel, const void* address) {
    *kernel = static_cast<cudaKernel_t>(const_cast<void*>(address));
    return cudaSuccess;
}
cudaError_t __cudaLaunchKernel(cudaKernel_t kernel, dim3 grid, dim3 block, void** arguments,
                               std::size_t shared, cudaStream_t stream) {
    return launchKernel(kernel, shapeOf(grid, block), arguments, shared, stream, false);
}

cudaError_t cudaLaunchKernel(const void* kernel, dim3 grid, dim3 block, void** arguments,
                             std::size_t shared, cudaStream_t stream) {
    return launchKernel(kernel, shapeOf(grid, block), arguments, shared, stream, false);
}

cudaError_t cudaLaunchCooperativeKernel(const void* kernel, dim3 grid, dim3 block, void** arguments,
                                        std::size_t shared, cudaStream_t stream) {
    return launchKernel(kernel, shapeOf(grid, block), arguments, shared, stream, true);
}

cudaError_t cudaLaunchKernelExC(const cudaLaunchConfig_t* c, const void* kernel, void** arguments) {
    Shape shape = shapeOf(c->gridDim, c->blockDim);
    bool cooperative = false;
    for (unsigned i = 0; i < c->numAttrs; ++i) {
        const cudaLaunchAttribute& a = c->attrs[i];
        if (a.id == cudaLaunchAttributeClusterDimension) {
            shape.cluster[0] = a.val.clusterDim.x;
            shape.cluster[1] = a.val.clusterDim.y;
            shape.cluster[2] = a.val.clusterDim.z;
        } else if (a.id == cudaLaunchAttributeCooperative) {
            cooperative = a.val.cooperative;
        } else {
            found(Kind::launch, "launch attribute %d is not known here", int(a.id));
        }
    }
    return launchKernel(kernel, shape, arguments, c->dynamicSmemBytes, c->stream, cooperative);
}

cudaError_t cudaFuncSetAttribute(const void* kernel, cudaFuncAttribute which, int value) {
    const Call call;
    auto known = handles().find(kernel);
    if (known == handles().end()) return result(cudaErrorInvalidDeviceFunction);
    if (which == cudaFuncAttributeMaxDynamicSharedMemorySize) {
        if (value < 0 || value > sharedBytesAtMost) return result(cudaErrorInvalidValue);
        known->second.sharedBytes = uint32_t(std::max(value, sharedBytesOfBlock));
    }
    return result(0);
}

cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessor(int* blocks, const void* address,
                                                          int lanes, std::size_t dynamic) {
    const Call call;
    auto known = handles().find(address);
    const Kernel* kernel =
        known == handles().end() ? nullptr : findKernel(known->second.name.c_str());
    if (!kernel) return result(cudaErrorInvalidDeviceFunction);
    *blocks = blocksAtOnce(uint32_t(lanes), kernel->sharedBytes + dynamic);
    return result(0);
}

cudaError_t cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(int* blocks, const void* address,
                                                                   int lanes, std::size_t dynamic,
                                                                   unsigned) {
    return cudaOccupancyMaxActiveBlocksPerMultiprocessor(blocks, address, lanes, dynamic);
}
}
