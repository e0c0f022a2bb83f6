// Launches: the kernel's own description of its work, made into time.
#include <algorithm>
#include <array>
#include <cstring>

#include "platform/timeline/costs.h"
#include "platform/timeline/state.h"

namespace timeline {
namespace {

constexpr std::size_t argumentLimit = 4096, bigArguments = 256;

struct Configuration {
    platform::Dim3 grid, block;
    platform::Stream stream = nullptr;
    std::size_t size = 0;
    bool set = false;
};
thread_local Configuration configuration;
alignas(16) thread_local std::array<unsigned char, argumentLimit> arguments;

// What a host may read afterwards.
void writeNorm(const platform::Work& work) {
    if (!work.norm || state().memory.placeOf(work.norm) == Place::elsewhere) return;
    if (work.normFrom) {
        std::memcpy(work.norm, work.normFrom, work.size);
    } else if (const double norm = randomNorm(work.normOf); work.size == sizeof norm) {
        std::memcpy(work.norm, &norm, sizeof norm);
    } else {
        const float single = float(norm);
        std::memcpy(work.norm, &single, sizeof single);
    }
}

}  // namespace

int configureCall(platform::Dim3 grid, platform::Dim3 block, std::size_t /*shared*/,
                  platform::Stream stream) {
    configuration = {grid, block, stream, 0, true};
    return cudaSuccess;
}

int setupArgument(const void* argument, std::size_t size, std::size_t offset) {
    if (!configuration.set) return reported(cudaErrorMissingConfiguration);
    if (offset > argumentLimit || size > argumentLimit - offset)
        return reported(cudaErrorInvalidValue);
    std::memcpy(arguments.data() + offset, argument, size);
    configuration.size = std::max(configuration.size, offset + size);
    return cudaSuccess;
}

int launch(const platform::Kernel* kernel) {
    const Entry entry;
    State& s = state();
    const Configuration c = configuration;
    configuration.set = false;
    if (!c.set) return reported(cudaErrorMissingConfiguration);
    if (!kernel || !kernel->work) return reported(cudaErrorInvalidDeviceFunction);
    const platform::Work work = kernel->work(arguments.data());
    ++s.counts.launches;
    s.clock.host(Kind::call, c.size < bigArguments ? s.machine.launch : s.machine.bigLaunch);
    submit(c.stream, Clock::compute, Kind::kernel, kernelSeconds(s.machine, work, c.grid, c.block));
    writeNorm(work);
    return cudaSuccess;
}

}  // namespace timeline
