// Launches by CUDA 3's three calls over the runtime's one: the pushed arguments are collected in
// a block, and the launch is given a pointer to each.
#include <cstring>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"
#include "platform/cuda/kernels.h"

namespace gpu {
namespace {

constexpr std::size_t argumentLimit = 4096;

struct Configuration {
    dim3 grid, block;
    std::size_t shared;
    cudaStream_t stream;
    bool set = false;
};

thread_local Configuration configuration;
thread_local std::vector<std::size_t> offsets;
alignas(16) thread_local unsigned char arguments[argumentLimit];

// Units are collected by their static initialisers, in an order nobody controls.
std::unordered_map<std::string, const void*>& stubs() {
    static auto* byName = new std::unordered_map<std::string, const void*>;
    return *byName;
}

// The first launch looks the name up. Threads that do so together find the same.
const void* stubOf(const platform::Kernel& kernel) {
    const void* stub = __atomic_load_n(&kernel.found, __ATOMIC_RELAXED);
    if (stub) return stub;
    const auto at = stubs().find(kernel.name);
    if (at == stubs().end()) return nullptr;
    __atomic_store_n(&kernel.found, at->second, __ATOMIC_RELAXED);
    return at->second;
}

dim3 native(platform::Dim3 d) {
    return dim3(d.x, d.y, d.z);
}

}  // namespace

void collectKernel(const char* name, const void* stub) {
    stubs()[name] = stub;
}

std::vector<std::string> kernelNames() {
    std::vector<std::string> names;
    for (const auto& [name, stub] : stubs()) names.push_back(name);
    return names;
}

int configureCall(platform::Dim3 grid, platform::Dim3 block, std::size_t shared,
                  platform::Stream stream) {
    configuration = {native(grid), native(block), shared, static_cast<cudaStream_t>(stream), true};
    offsets.clear();
    return cudaSuccess;
}

int setupArgument(const void* argument, std::size_t size, std::size_t offset) {
    if (!configuration.set) return reported3(cuda3::cudaErrorMissingConfiguration);
    if (offset > argumentLimit || size > argumentLimit - offset)
        return reported(cudaErrorInvalidValue);
    std::memcpy(arguments + offset, argument, size);
    offsets.push_back(offset);
    return cudaSuccess;
}

int launch(const platform::Kernel* kernel, int cooperative) {
    const Configuration c = configuration;
    configuration.set = false;
    if (!c.set) return reported3(cuda3::cudaErrorMissingConfiguration);
    const void* stub = kernel ? stubOf(*kernel) : nullptr;
    if (!stub) return reported3(cuda3::cudaErrorInvalidDeviceFunction);
    bindContext();
    OnDevice here;
    void* pointers[64];
    if (offsets.size() > std::size(pointers)) return reported(cudaErrorInvalidValue);
    for (std::size_t i = 0; i < offsets.size(); ++i) pointers[i] = arguments + offsets[i];
    const auto start = cooperative ? cudaLaunchCooperativeKernel : cudaLaunchKernel;
    return reported(start(stub, c.grid, c.block, pointers, c.shared, c.stream));
}

int cooperativeBlocks(const platform::Kernel* kernel, int lanes) {
    const void* stub = kernel ? stubOf(*kernel) : nullptr;
    OnDevice here;
    int device = processDevice(), able = 0, multiprocessors = 0, blocks = 0;
    if (!stub || cudaDeviceGetAttribute(&able, cudaDevAttrCooperativeLaunch, device) || !able ||
        cudaDeviceGetAttribute(&multiprocessors, cudaDevAttrMultiProcessorCount, device) ||
        cudaOccupancyMaxActiveBlocksPerMultiprocessor(&blocks, stub, lanes, 0)) {
        cudaGetLastError();
        return 0;
    }
    return multiprocessors * blocks;
}

}  // namespace gpu
