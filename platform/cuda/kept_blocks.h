// Memory that is given back, kept for the next request that it fits: a runtime takes long to hand
// out memory, longest where it is page-locked, and every call wants the same again.
#pragma once

#include <cuda_runtime_api.h>

#include <cstddef>
#include <map>
#include <mutex>

namespace gpu {

class KeptBlocks {
  public:
    using Allocate = cudaError_t (*)(void**, std::size_t);
    using Free = cudaError_t (*)(void*);
    KeptBlocks(Allocate allocate, Free free) : allocate_(allocate), free_(free) {}

    // A kept block of at most twice the size, else a new one. Short memory takes what is kept.
    cudaError_t take(void** pointer, std::size_t bytes);
    // Keeps a block of take()'s, `most` bytes in all. False if it is none.
    bool give(void* pointer, std::size_t most);
    // Whether a block is kept: given back, and no longer the caller's to give.
    bool keeps(const void* pointer);
    // Gives kept blocks back to the runtime, the largest first, until no more than this is left.
    void discard(std::size_t downTo = 0);

  private:
    void discardLocked(std::size_t downTo);

    const Allocate allocate_;
    const Free free_;
    std::mutex mutex_;
    std::map<void*, std::size_t> live_;
    std::multimap<std::size_t, void*> kept_;
    std::size_t keptBytes_ = 0;
};

// What this process holds on the device, and of page-locked host memory.
KeptBlocks& deviceBlocks();
KeptBlocks& pageLockedBlocks();

}  // namespace gpu
