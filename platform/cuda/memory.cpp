#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"
#include "platform/cuda/kept_blocks.h"
#include "platform/cuda/staged_copy.h"

namespace gpu {
namespace {

// So much is kept for reuse: of the device's memory a part that others will not miss.
constexpr std::size_t keptPageLocked = std::size_t(256) << 20;
std::size_t keptOnDevice() {
    platform::DeviceProperties properties;
    return getDeviceProperties(&properties, processDevice()) == cudaSuccess
               ? properties.totalGlobalMem / 8
               : 0;
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
    return reported(deviceBlocks().take(pointer, bytes));
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
    if (deviceBlocks().keeps(pointer)) return reported3(cuda3::cudaErrorInvalidDevicePointer);
    // To give memory back waits for what may still work on it.
    cudaError_t error = cudaDeviceSynchronize();
    if (deviceBlocks().give(pointer, error == cudaSuccess ? keptOnDevice() : 0))
        return reported(error);
    error = cudaFree(pointer);
    if (error != cudaErrorInvalidValue) return reported(error);
    cudaGetLastError();
    return reported3(cuda3::cudaErrorInvalidDevicePointer);
}

int mallocHost(void** pointer, std::size_t bytes) {
    *pointer = nullptr;
    bindContext();
    if (bytes == 0) return cudaSuccess;
    OnDevice here;
    return reported(pageLockedBlocks().take(pointer, bytes));
}

int freeHost(void* pointer) {
    if (!pointer) return cudaSuccess;
    OnDevice here;
    return pageLockedBlocks().give(pointer, keptPageLocked)
               ? cudaSuccess
               : reported3(cuda3::cudaErrorInvalidHostPointer);
}

int releaseKept() {
    OnDevice here;
    deviceBlocks().discard();
    pageLockedBlocks().discard();
    releaseKeptStreams();
    return cudaSuccess;
}

int memcpy(void* to, const void* from, std::size_t bytes, int /*kind*/) {
    bindContext();
    OnDevice here;
    cudaError_t error;
    if (copyStaged({to, bytes, from, bytes, bytes, 1}, error)) return reported(error);
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
    cudaError_t error;
    if (copyStaged({to, toPitch, from, fromPitch, width, height}, error)) return reported(error);
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
