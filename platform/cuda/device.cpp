#include "platform/cuda/device.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <vector>

#include "platform/cuda/errors.h"

namespace gpu {
namespace {

struct Context {
    std::mutex mutex;
    std::atomic<int> device{0};
    bool explicitlyChosen = false;
    std::atomic<bool> bound{false};
};

Context& context() {
    static auto* instance = new Context;  // never destroyed: calls come at exit too
    return *instance;
}

int attribute(cudaDeviceAttr which, int device) {
    int value = 0;
    if (cudaDeviceGetAttribute(&value, which, device) != cudaSuccess) cudaGetLastError();
    return value;
}

// The runtime's query takes long, and every 1-D launch asks.
cudaError_t query(int device, platform::DeviceProperties& p) {
    cudaDeviceProp now;
    if (const cudaError_t error = cudaGetDeviceProperties(&now, device)) return error;
    p = {};
    std::snprintf(p.name, sizeof p.name, "%s", now.name);
    p.totalGlobalMem = now.totalGlobalMem;
    p.sharedMemPerBlock = now.sharedMemPerBlock;
    p.regsPerBlock = now.regsPerBlock;
    p.warpSize = now.warpSize;
    p.memPitch = now.memPitch;
    p.maxThreadsPerBlock = now.maxThreadsPerBlock;
    std::copy_n(now.maxThreadsDim, 3, p.maxThreadsDim);
    std::copy_n(now.maxGridSize, 3, p.maxGridSize);
    p.totalConstMem = now.totalConstMem;
    p.major = now.major;
    p.minor = now.minor;
    p.textureAlignment = now.textureAlignment;
    p.multiProcessorCount = now.multiProcessorCount;
    p.integrated = now.integrated;
    p.canMapHostMemory = now.canMapHostMemory;
    // These have left the structure in CUDA 13 and are attributes in every version.
    p.clockRate = attribute(cudaDevAttrClockRate, device);
    p.deviceOverlap = attribute(cudaDevAttrAsyncEngineCount, device) > 0;
    p.kernelExecTimeoutEnabled = attribute(cudaDevAttrKernelExecTimeout, device);
    p.computeMode = attribute(cudaDevAttrComputeMode, device);
    return cudaSuccess;
}

}  // namespace

void bindContext() {
    Context& c = context();
    if (c.bound.load(std::memory_order_acquire)) return;
    std::lock_guard<std::mutex> lock(c.mutex);
    c.bound = true;
}

bool contextBound() {
    return context().bound;
}

int processDevice() {
    return context().device;
}

// Within a major version an older driver runs a newer runtime. The library knows only that a driver
// must not be older than the runtime, so such a runtime has the driver's version.
int runtimeGetVersion(int* version) {
    if (const cudaError_t error = cudaRuntimeGetVersion(version)) return reported(error);
    int driver = 0;
    if (cudaDriverGetVersion(&driver) != cudaSuccess) cudaGetLastError();
    if (driver / 1000 == *version / 1000) *version = std::min(*version, driver);
    return cudaSuccess;
}

// A driver that is too old for the runtime to speak to has no version, as if there were none.
int driverGetVersion(int* version) {
    *version = 0;
    const cudaError_t error = cudaDriverGetVersion(version);
    if (error != cudaErrorInsufficientDriver) return reported(error);
    cudaGetLastError();
    return cudaSuccess;
}

int getDeviceCount(int* count) {
    *count = 0;
    return reported(cudaGetDeviceCount(count));
}

int getDeviceProperties(platform::DeviceProperties* properties, int device) {
    static std::mutex mutex;
    static auto* known = new std::vector<platform::DeviceProperties>;
    std::lock_guard<std::mutex> lock(mutex);
    if (known->empty()) {
        int count = 0;
        if (const cudaError_t error = cudaGetDeviceCount(&count)) return reported(error);
        std::vector<platform::DeviceProperties> all(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i)
            if (const cudaError_t error = query(i, all[std::size_t(i)])) return reported(error);
        *known = std::move(all);
    }
    if (device < 0 || device >= int(known->size())) return reported(cudaErrorInvalidDevice);
    *properties = (*known)[std::size_t(device)];
    return cudaSuccess;
}

int setDevice(int device) {
    int count = 0;
    if (const cudaError_t error = cudaGetDeviceCount(&count)) return reported(error);
    if (device < 0 || device >= count) return reported(cudaErrorInvalidDevice);
    Context& c = context();
    std::lock_guard<std::mutex> lock(c.mutex);
    if (c.bound) return reported3(cuda3::cudaErrorSetOnActiveProcess);
    c.device = device;
    forgetContext();
    c.explicitlyChosen = true;
    return cudaSuccess;
}

int getDevice(int* device) {
    int count = 0;
    if (const cudaError_t error = cudaGetDeviceCount(&count)) return reported(error);
    *device = context().device;
    return cudaSuccess;
}

int threadSynchronize() {
    Context& c = context();
    bool take;
    {
        std::lock_guard<std::mutex> lock(c.mutex);
        take = c.explicitlyChosen;
    }
    if (take) bindContext();
    if (!contextBound()) return cudaSuccess;  // nothing can be under way
    OnDevice here;
    return reported(cudaDeviceSynchronize());
}

}  // namespace gpu
