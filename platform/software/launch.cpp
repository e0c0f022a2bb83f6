// Kernel launches: the pushed configuration and arguments of the calling thread, and the run.
#include <cxxabi.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/pool.h"
#include "platform/software/streams.h"

namespace software {
namespace {

constexpr std::size_t argumentLimit = 4096;

struct Arguments {
    alignas(16) std::array<unsigned char, argumentLimit> bytes;
};

struct Configuration {
    platform::Dim3 grid, block;
    platform::Stream stream;
    std::size_t size;
    bool set = false;
};

thread_local Configuration configuration;
thread_local Arguments pushed;

void* address(void* devicePointer) {
    return deviceHeap().address(devicePointer, 0);
}

void execute(const platform::Kernel& kernel, const unsigned char* arguments, platform::Dim3 grid,
             platform::Dim3 block) {
    if (kernel.run({arguments, grid, block, address, parallel, threads()})) return;
    noteViolation("a kernel was given a pointer that leads to no device memory");
    failAsynchronously(cudaErrorLaunchFailure);
}

bool within(platform::Dim3 d, const int (&limits)[3]) {
    return d.x > 0 && d.y > 0 && d.z > 0 && d.x <= unsigned(limits[0]) &&
           d.y <= unsigned(limits[1]) && d.z <= unsigned(limits[2]);
}

bool valid(const Configuration& c) {
    const platform::DeviceProperties& p = propertiesOf(currentDevice());
    const unsigned long threads = 1ul * c.block.x * c.block.y * c.block.z;
    return within(c.grid, p.maxGridSize) && within(c.block, p.maxThreadsDim) &&
           threads <= unsigned(p.maxThreadsPerBlock);
}

// As many blocks as the device's multiprocessors hold at the same time, by their lanes alone.
unsigned long mostTogether(unsigned long lanesOfBlock) {
    const platform::DeviceProperties p = propertiesOf(currentDevice());
    constexpr unsigned long lanesAtOnce = 2048;
    return p.major < 6 ? 0 : unsigned(p.multiProcessorCount) * (lanesAtOnce / lanesOfBlock);
}

std::string demangled(const platform::Kernel* kernel) {
    if (!kernel) return "(not registered)";
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(kernel->name, nullptr, nullptr, &status), &std::free);
    std::string name = status == 0 ? text.get() : kernel->name;
    // "void LASR_k<cudalib::StaticMap1D<64u>, (char)82, float>(int, ...)": the instance alone tells
    // it, up to the parameters, which are in no angle brackets.
    if (name.compare(0, 5, "void ") == 0) name.erase(0, 5);
    int depth = 0;
    const auto parameters = std::find_if(name.begin(), name.end(), [&](char c) {
        depth += (c == '<') - (c == '>');
        return c == '(' && depth == 0;
    });
    return {name.begin(), parameters};
}

}  // namespace

int configureCall(platform::Dim3 grid, platform::Dim3 block, std::size_t shared,
                  platform::Stream stream) {
    auto body = [&] {
        configuration = {grid, block, stream, 0, true};
        return cudaSuccess;
    };
    return call("cudaConfigureCall", body, grid, block, shared, stream);
}

int setupArgument(const void* argument, std::size_t size, std::size_t offset) {
    auto body = [&] {
        if (!configuration.set) return cudaErrorMissingConfiguration;
        if (offset > argumentLimit || size > argumentLimit - offset) return cudaErrorInvalidValue;
        std::memcpy(pushed.bytes.data() + offset, argument, size);
        configuration.size = std::max(configuration.size, offset + size);
        return cudaSuccess;
    };
    return call("cudaSetupArgument", body, size, offset);
}

int launch(const platform::Kernel* kernel, int cooperative) {
    const Configuration c = configuration;
    configuration.set = false;
    auto body = [&] {
        if (!c.set) return int(cudaErrorMissingConfiguration);
        if (!kernel) return int(cudaErrorInvalidDeviceFunction);
        if (int error = bindContext()) return error;
        if (!isStream(c.stream)) return int(cudaErrorInvalidResourceHandle);
        if (!valid(c)) return int(cudaErrorInvalidConfiguration);
        const unsigned long blocks = 1ul * c.grid.x * c.grid.y * c.grid.z;
        const unsigned long lanesOfBlock = 1ul * c.block.x * c.block.y * c.block.z;
        if (cooperative && blocks > mostTogether(lanesOfBlock))
            return int(cudaErrorLaunchOutOfResources);
        const std::size_t lanes = std::size_t(c.grid.x) * c.grid.y * c.block.x * c.block.y;
        if (runsAtOnce(lanes)) {
            execute(*kernel, pushed.bytes.data(), c.grid, c.block);
        } else {
            std::shared_ptr<Arguments> copy(new Arguments);
            std::memcpy(copy->bytes.data(), pushed.bytes.data(), c.size);
            auto run = [kernel, copy, c](std::size_t) {
                execute(*kernel, copy->bytes.data(), c.grid, c.block);
            };
            submit(c.stream, {run, 1, lanes});
        }
        return int(cudaSuccess);
    };
    if (!instrumented.load(std::memory_order_relaxed)) return call("cudaLaunch", body);
    return call("cudaLaunch", body, demangled(kernel), c.grid, c.block);
}

int cooperativeBlocks(const platform::Kernel*, int lanes) {
    return machine().devices.empty() ? 0 : int(mostTogether(unsigned(lanes)));
}

}  // namespace software
