// Allocation and its accounts.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <vector>

#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/streams.h"

namespace software {
namespace {

struct Accounts {
    std::mutex mutex;
    std::vector<std::size_t> used;  // by device
    std::size_t device = 0, devicePeak = 0;
    std::size_t pageLocked = 0, pageLockedPeak = 0;
    std::atomic<int> violations{0};
};

Accounts& accounts() {
    static auto* instance = new Accounts;
    return *instance;
}

// Takes `bytes` from the current device's memory, or says that it has not so many.
bool reserve(std::size_t bytes, int device) {
    Accounts& a = accounts();
    std::lock_guard<std::mutex> lock(a.mutex);
    a.used.resize(machine().devices.size());
    const std::size_t memory = machine().devices[device].memory;
    if (bytes > memory || a.used[device] > memory - bytes) return false;
    a.used[device] += bytes;
    a.device += bytes;
    a.devicePeak = std::max(a.devicePeak, a.device);
    return true;
}

void giveBack(std::size_t bytes, int device) {
    Accounts& a = accounts();
    std::lock_guard<std::mutex> lock(a.mutex);
    a.used[device] -= bytes;
    a.device -= bytes;
}

int allocateDevice(void** pointer, std::size_t bytes) {
    if (!pointer) return cudaErrorInvalidValue;
    *pointer = nullptr;
    if (int error = bindContext()) return error;
    if (bytes == 0) return cudaSuccess;
    const int device = currentDevice();
    if (!reserve(bytes, device)) return cudaErrorMemoryAllocation;
    *pointer = deviceHeap().allocate(bytes, device);
    if (*pointer) return cudaSuccess;
    giveBack(bytes, device);
    return cudaErrorMemoryAllocation;
}

}  // namespace

Heap& deviceHeap() {
    static auto* heap = new Heap;
    return *heap;
}

Heap& pageLockedHeap() {
    static auto* heap = new Heap;
    return *heap;
}

void noteViolation(const char* what) {
    std::fprintf(stderr, "lumo software device: %s\n", what);
    ++accounts().violations;
}

int memGetInfo(std::size_t* free, std::size_t* total) {
    auto body = [&] {
        if (int error = bindContext()) return error;
        const int device = currentDevice();
        Accounts& a = accounts();
        std::lock_guard<std::mutex> lock(a.mutex);
        a.used.resize(machine().devices.size());
        *total = machine().devices[device].memory;
        *free = *total - a.used[device];
        return int(cudaSuccess);
    };
    return call("cudaMemGetInfo", body);
}

int isDevicePointer(const void* pointer) {
    return deviceHeap().contains(pointer);
}

int malloc(void** pointer, std::size_t bytes) {
    return call(
        "cudaMalloc", [&] { return allocateDevice(pointer, bytes); }, bytes);
}

int mallocPitch(void** pointer, std::size_t* pitch, std::size_t width, std::size_t height) {
    auto body = [&] {
        if (!pitch) return int(cudaErrorInvalidValue);
        *pitch = (width + 511) / 512 * 512;
        if (*pitch < width || (height && *pitch > ~std::size_t(0) / height))
            return int(cudaErrorMemoryAllocation);
        return allocateDevice(pointer, *pitch * height);
    };
    return call("cudaMallocPitch", body, width, height);
}

int mallocHost(void** pointer, std::size_t bytes) {
    auto body = [&] {
        *pointer = nullptr;
        if (int error = bindContext()) return error;
        if (bytes == 0) return int(cudaSuccess);
        *pointer = pageLockedHeap().allocate(bytes, 0);
        if (!*pointer) return int(cudaErrorMemoryAllocation);
        Accounts& a = accounts();
        std::lock_guard<std::mutex> lock(a.mutex);
        a.pageLocked += bytes;
        a.pageLockedPeak = std::max(a.pageLockedPeak, a.pageLocked);
        return int(cudaSuccess);
    };
    return call("cudaMallocHost", body, bytes);
}

int free(void* pointer) {
    auto body = [&] {
        drainAll();  // as on a GPU, releasing device memory waits for the device
        std::size_t bytes = 0;
        int device = 0;
        if (!pointer) return cudaSuccess;
        if (!deviceHeap().release(pointer, bytes, device)) return cudaErrorInvalidDevicePointer;
        giveBack(bytes, device);
        return cudaSuccess;
    };
    return call<OnFault::perform>("cudaFree", body, pointer);
}

// Does not wait for copies that still use the block: whoever gives it back must have.
int freeHost(void* pointer) {
    auto body = [&] {
        std::size_t bytes = 0;
        int owner = 0;
        if (!pointer) return cudaSuccess;
        if (!pageLockedHeap().release(pointer, bytes, owner)) return cudaErrorInvalidHostPointer;
        Accounts& a = accounts();
        std::lock_guard<std::mutex> lock(a.mutex);
        a.pageLocked -= bytes;
        return cudaSuccess;
    };
    return call<OnFault::perform>("cudaFreeHost", body, pointer);
}

Usage usage() {
    const int damage = deviceHeap().takeDamage() + pageLockedHeap().takeDamage();
    Accounts& a = accounts();
    for (int i = 0; i < damage; ++i) noteViolation("a write beyond the ends of a block");
    std::lock_guard<std::mutex> lock(a.mutex);
    return {a.device, a.devicePeak, a.pageLocked, a.pageLockedPeak, liveStreams(), a.violations};
}

void resetPeak() {
    Accounts& a = accounts();
    std::lock_guard<std::mutex> lock(a.mutex);
    a.devicePeak = a.device;
    a.pageLockedPeak = a.pageLocked;
}

void resetAccounts() {
    Accounts& a = accounts();
    std::lock_guard<std::mutex> lock(a.mutex);
    a.used.clear();
    a.device = a.devicePeak = a.pageLocked = a.pageLockedPeak = 0;
    a.violations = 0;
}

void* bytesBehind(const void* devicePointer) {
    drainAll();
    return deviceHeap().contains(devicePointer) ? deviceHeap().address(devicePointer, 0) : nullptr;
}

int releaseKept() {
    deviceHeap().trim();
    pageLockedHeap().trim();
    return cudaSuccess;
}

}  // namespace software
