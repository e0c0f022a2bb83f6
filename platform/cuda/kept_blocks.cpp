#include "platform/cuda/kept_blocks.h"

#include <algorithm>
#include <iterator>

namespace gpu {

cudaError_t KeptBlocks::take(void** pointer, std::size_t bytes) {
    std::lock_guard<std::mutex> lock(mutex_);
    std::size_t size = bytes;
    const auto fit = kept_.lower_bound(bytes);
    if (fit != kept_.end() && fit->first / 2 <= bytes) {
        size = fit->first;
        *pointer = fit->second;
        keptBytes_ -= size;
        kept_.erase(fit);
    } else {
        cudaError_t error = allocate_(pointer, bytes);
        if (error == cudaErrorMemoryAllocation && keptBytes_ > 0) {
            cudaGetLastError();
            discardLocked(0);
            error = allocate_(pointer, bytes);
        }
        if (error != cudaSuccess) return error;
    }
    live_[*pointer] = size;
    return cudaSuccess;
}

bool KeptBlocks::give(void* pointer, std::size_t most) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = live_.find(pointer);
    if (found == live_.end()) return false;
    const std::size_t size = found->second;
    live_.erase(found);
    kept_.emplace(size, pointer);
    keptBytes_ += size;
    discardLocked(most);
    return true;
}

bool KeptBlocks::keeps(const void* pointer) {
    std::lock_guard<std::mutex> lock(mutex_);
    return std::any_of(kept_.begin(), kept_.end(),
                       [&](const auto& block) { return block.second == pointer; });
}

void KeptBlocks::discard(std::size_t downTo) {
    std::lock_guard<std::mutex> lock(mutex_);
    discardLocked(downTo);
}

void KeptBlocks::discardLocked(std::size_t downTo) {
    while (keptBytes_ > downTo) {
        const auto largest = std::prev(kept_.end());
        if (free_(largest->second) != cudaSuccess) cudaGetLastError();
        keptBytes_ -= largest->first;
        kept_.erase(largest);
    }
}

// Neither is ever destroyed: calls come at exit, too.
KeptBlocks& deviceBlocks() {
    static auto* instance =
        new KeptBlocks([](void** pointer, std::size_t bytes) { return cudaMalloc(pointer, bytes); },
                       [](void* pointer) { return cudaFree(pointer); });
    return *instance;
}

KeptBlocks& pageLockedBlocks() {
    static auto* instance = new KeptBlocks(
        [](void** pointer, std::size_t bytes) { return cudaMallocHost(pointer, bytes); },
        [](void* pointer) { return cudaFreeHost(pointer); });
    return *instance;
}

}  // namespace gpu
