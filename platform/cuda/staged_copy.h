// Copies between ordinary host memory and the device. The runtime's own way leaves most of the bus
// idle, since one thread passes the bytes through page-locked memory: here several do.
#pragma once

#include <cuda_runtime_api.h>

#include <cstddef>

namespace gpu {

// `height` rows of `width` bytes, each side with a pitch.
struct Rows {
    void* to;
    std::size_t toPitch;
    const void* from;
    std::size_t fromPitch;
    std::size_t width, height;
};

// Copies rows of which one side is the device's and the other pageable. Done when it returns, and
// after all that was issued before on streams that wait for the default one. False, with nothing
// copied, if another way is the better: few bytes, two sides of a kind, or no page-locked memory.
bool copyStaged(const Rows& rows, cudaError_t& error);

}  // namespace gpu
