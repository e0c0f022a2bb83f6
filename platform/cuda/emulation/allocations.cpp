// The runtime's calls that allocate memory, and those that ask about it.
#include <cuda_runtime_api.h>

#include <cstring>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/races.h"
#include "platform/cuda/emulation/settings.h"
#include "platform/cuda/emulation/streams.h"

using namespace emulated;

namespace {

constexpr int unset = 0xff;  // in every byte of new memory: NaN

}  // namespace

extern "C" {

cudaError_t cudaMemGetInfo(std::size_t* free, std::size_t* total) {
    const Call call;
    currentDevice();
    *total = settings().memory;
    *free = settings().memory - memoryInUse();
    return result(0);
}

cudaError_t cudaMalloc(void** pointer, std::size_t bytes) {
    const Call call;
    count("allocate");
    if (stickyError()) return result(0);
    const int device = currentDevice();
    if (shortOfMemory(bytes) || failsNow("malloc")) return result(cudaErrorMemoryAllocation);
    *pointer = nullptr;
    if (bytes == 0) return result(0);
    const uint64_t address = deviceMemory().take(bytes, device);
    std::memset(deviceMemory().reach(address), unset, bytes);
    useMemory(std::ptrdiff_t(bytes));
    *pointer = reinterpret_cast<void*>(address);
    return result(0);
}

cudaError_t cudaMallocPitch(void** pointer, std::size_t* pitch, std::size_t width,
                            std::size_t height) {
    constexpr std::size_t step = 512;
    *pitch = (width + step - 1) / step * step;
    if (height && *pitch > SIZE_MAX / height) {
        const Call call;
        return result(cudaErrorMemoryAllocation);
    }
    return cudaMalloc(pointer, *pitch * height);
}

cudaError_t cudaFree(void* pointer) {
    const Call call;
    if (stickyError() || !pointer) return result(0);
    count("free");
    completeDevice(currentDevice());
    if (stickyError()) return result(0);
    const auto address = uint64_t(pointer);
    const Allocation* at = deviceMemory().startingAt(address);
    if (!at) {
        if (deviceMemory().contains(address))
            found(Kind::memory, "cudaFree of %p, which is not the start of an allocation", pointer);
        return result(cudaErrorInvalidValue);
    }
    if (at->device != currentDevice())
        found(Kind::device, "cudaFree of memory of device %d on device %d", at->device,
              currentDevice());
    useMemory(-std::ptrdiff_t(at->bytes));
    if (settings().races) forgetAccesses(address, at->bytes);
    deviceMemory().giveBack(address);
    return result(0);
}

cudaError_t cudaMallocHost(void** pointer, std::size_t bytes) {
    const Call call;
    count("allocate host");
    if (stickyError()) return result(0);
    const int device = currentDevice();
    if (failsNow("host")) return result(cudaErrorMemoryAllocation);
    *pointer = nullptr;
    if (bytes == 0) return result(0);
    const uint64_t address = pageLockedMemory().take(bytes, device);
    std::memset(pageLockedMemory().reach(address), unset, bytes);
    *pointer = reinterpret_cast<void*>(address);
    return result(0);
}

cudaError_t cudaFreeHost(void* pointer) {
    const Call call;
    if (stickyError() || !pointer) return result(0);
    count("free host");
    completeDevice(currentDevice());
    if (!pageLockedMemory().startingAt(uint64_t(pointer))) return result(cudaErrorInvalidValue);
    pageLockedMemory().giveBack(uint64_t(pointer));
    return result(0);
}

cudaError_t cudaPointerGetAttributes(cudaPointerAttributes* attributes, const void* pointer) {
    const Call call;
    std::memset(attributes, 0, sizeof *attributes);
    attributes->device = -1;
    attributes->type = cudaMemoryTypeUnregistered;
    const Place place = placeOf(pointer);
    if (place == Place::device) {
        attributes->type = cudaMemoryTypeDevice;
        attributes->device = deviceMemory().find(uint64_t(pointer))->device;
        attributes->devicePointer = const_cast<void*>(pointer);
    } else if (place == Place::pageLocked) {
        attributes->type = cudaMemoryTypeHost;
        attributes->device = pageLockedMemory().find(uint64_t(pointer))->device;
        attributes->devicePointer = attributes->hostPointer = const_cast<void*>(pointer);
    } else if (place == Place::pageable) {
        attributes->hostPointer = const_cast<void*>(pointer);
    }
    return result(0);
}
}
