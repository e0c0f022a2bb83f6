// Launches: the kernel's own description of its work, made into time.
#include <algorithm>
#include <array>
#include <cmath>
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

void writePivots(const platform::Work& work) {
    if (!work.pivots || state().memory.placeOf(work.pivots) == Place::elsewhere) return;
    randomPivots(work.rows, work.columns, work.pivots);
    for (int k = 0; k < work.columns; ++k) work.pivots[k] += work.first;
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

int launch(const platform::Kernel* kernel, int cooperative) {
    const Entry entry;
    State& s = state();
    const Configuration c = configuration;
    configuration.set = false;
    if (!c.set) return reported(cudaErrorMissingConfiguration);
    if (!kernel || !kernel->work) return reported(cudaErrorInvalidDeviceFunction);
    const int blocks = int(c.grid.x * c.grid.y * c.grid.z);
    const int lanes = int(c.block.x * c.block.y * c.block.z);
    if (cooperative && blocks > cooperativeBlocks(kernel, lanes))
        return reported(cudaErrorLaunchOutOfResources);
    const platform::Work work = kernel->work(arguments.data());
    ++s.counts.launches;
    s.clock.host(Kind::call, c.size < bigArguments ? s.machine.launch : s.machine.bigLaunch);
    submit(c.stream, Kind::kernel, kernelLoad(s.machine, work, blocks, lanes));
    writeNorm(work);
    writePivots(work);
    return cudaSuccess;
}

// By their lanes alone, as many as keep a processor busy.
int cooperativeBlocks(const platform::Kernel*, int lanes) {
    const Machine& m = state().machine;
    const double ofProcessor = std::max(1., std::floor(m.kernelLanes / lanes));
    return m.capability < 6 || m.meeting.at(1) <= 0 ? 0 : int(m.processors * ofProcessor);
}

}  // namespace timeline
