#include <iterator>
#include <map>
#include <mutex>

#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"

namespace gpu {
namespace {

// A GPU takes milliseconds to page-lock memory, and the algorithms want a panel for each call:
// blocks that are given back are kept.
struct PageLocked {
    static constexpr std::size_t keepAtMost = std::size_t(256) << 20;
    std::mutex mutex;
    std::map<void*, std::size_t> live;
    std::multimap<std::size_t, void*> kept;
    std::size_t keptBytes = 0;

    // Gives kept blocks back, the largest first, until no more than this is left.
    void discardKept(std::size_t downTo) {
        while (keptBytes > downTo) {
            auto largest = std::prev(kept.end());
            if (cudaFreeHost(largest->second) != cudaSuccess) cudaGetLastError();
            keptBytes -= largest->first;
            kept.erase(largest);
        }
    }
};

PageLocked& pageLocked() {
    static auto* instance = new PageLocked;
    return *instance;
}

// Unified addressing knows where a pointer leads better than the caller's word does.
constexpr cudaMemcpyKind anywhere = cudaMemcpyDefault;

cudaStream_t native(platform::Stream stream) {
    return static_cast<cudaStream_t>(stream);
}

}  // namespace

int memGetInfo(std::size_t* free, std::size_t* total) {
    bindContext();
    OnDevice here;
    return reported(cudaMemGetInfo(free, total));
}

int isDevicePointer(const void* pointer) {
    OnDevice here;
    cudaPointerAttributes attributes{};
    if (cudaPointerGetAttributes(&attributes, pointer) != cudaSuccess) {
        cudaGetLastError();
        return 0;
    }
    return attributes.type == cudaMemoryTypeDevice || attributes.type == cudaMemoryTypeManaged;
}

int malloc(void** pointer, std::size_t bytes) {
    *pointer = nullptr;
    bindContext();
    if (bytes == 0) return cudaSuccess;
    OnDevice here;
    return reported(cudaMalloc(pointer, bytes));
}

int mallocPitch(void** pointer, std::size_t* pitch, std::size_t width, std::size_t height) {
    *pointer = nullptr;
    bindContext();
    OnDevice here;
    return reported(cudaMallocPitch(pointer, pitch, width, height));
}

int free(void* pointer) {
    if (!pointer) return cudaSuccess;
    OnDevice here;
    const cudaError_t error = cudaFree(pointer);
    if (error != cudaErrorInvalidValue) return reported(error);
    cudaGetLastError();
    return reported3(cuda3::cudaErrorInvalidDevicePointer);
}

int mallocHost(void** pointer, std::size_t bytes) {
    *pointer = nullptr;
    bindContext();
    if (bytes == 0) return cudaSuccess;
    PageLocked& p = pageLocked();
    std::lock_guard<std::mutex> lock(p.mutex);
    OnDevice here;
    std::size_t size = bytes;
    auto fit = p.kept.lower_bound(bytes);
    if (fit != p.kept.end() && fit->first <= 2 * bytes) {
        size = fit->first;
        *pointer = fit->second;
        p.keptBytes -= size;
        p.kept.erase(fit);
    } else {
        cudaError_t error = cudaMallocHost(pointer, bytes);
        if (error == cudaErrorMemoryAllocation && p.keptBytes > 0) {
            cudaGetLastError();
            p.discardKept(0);
            error = cudaMallocHost(pointer, bytes);
        }
        if (error != cudaSuccess) return reported(error);
    }
    p.live[*pointer] = size;
    return cudaSuccess;
}

int freeHost(void* pointer) {
    if (!pointer) return cudaSuccess;
    PageLocked& p = pageLocked();
    std::lock_guard<std::mutex> lock(p.mutex);
    auto found = p.live.find(pointer);
    if (found == p.live.end()) return reported3(cuda3::cudaErrorInvalidHostPointer);
    const std::size_t size = found->second;
    p.live.erase(found);
    OnDevice here;
    if (size > PageLocked::keepAtMost) return reported(cudaFreeHost(pointer));
    p.discardKept(PageLocked::keepAtMost - size);
    p.kept.emplace(size, pointer);
    p.keptBytes += size;
    return cudaSuccess;
}

void trimPageLocked() {
    PageLocked& p = pageLocked();
    std::lock_guard<std::mutex> lock(p.mutex);
    OnDevice here;
    p.discardKept(0);
}

int memcpy(void* to, const void* from, std::size_t bytes, int /*kind*/) {
    bindContext();
    OnDevice here;
    return reported(cudaMemcpy(to, from, bytes, anywhere));
}

int memcpyAsync(void* to, const void* from, std::size_t bytes, int /*kind*/,
                platform::Stream stream) {
    bindContext();
    OnDevice here;
    return reported(cudaMemcpyAsync(to, from, bytes, anywhere, native(stream)));
}

int memcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
             std::size_t width, std::size_t height, int /*kind*/) {
    bindContext();
    OnDevice here;
    return reported(cudaMemcpy2D(to, toPitch, from, fromPitch, width, height, anywhere));
}

int memcpy2DAsync(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                  std::size_t width, std::size_t height, int /*kind*/, platform::Stream stream) {
    bindContext();
    OnDevice here;
    return reported(
        cudaMemcpy2DAsync(to, toPitch, from, fromPitch, width, height, anywhere, native(stream)));
}

int memset(void* pointer, int value, std::size_t bytes) {
    bindContext();
    OnDevice here;
    return reported(cudaMemset(pointer, value, bytes));
}

}  // namespace gpu
