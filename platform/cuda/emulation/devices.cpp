#include "platform/cuda/emulation/devices.h"

#include <cuda.h>
#include <cuda_runtime_api.h>

#include <cstdio>
#include <cstring>

#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/settings.h"

// A device's primary context, which is all that a program ever has here.
struct CUctx_st {
    int device;
    bool made;
};

namespace emulated {
namespace {

constexpr int devicesAtMost = 16;
CUctx_st contexts[devicesAtMost];
constexpr int none = -1;
thread_local int current = none;

bool known(int device) {
    return device >= 0 && device < settings().devices && device < devicesAtMost;
}

// The runtime makes a device's context when it is chosen.
void choose(int device) {
    current = device;
    CUctx_st& context = contexts[device];
    if (!context.made) count("context");
    context = {device, true};
}

}  // namespace

int currentDevice() {
    if (current == none) choose(0);
    return current;
}

DeviceOfWork::DeviceOfWork(int device) : before_(current) {
    current = device;
}
DeviceOfWork::~DeviceOfWork() {
    current = before_;
}

}  // namespace emulated

using namespace emulated;

extern "C" {

CUresult cuCtxGetCurrent(CUcontext* context) {
    const Call call;
    *context = current == none ? nullptr : &contexts[current];
    return CUDA_SUCCESS;
}

CUresult cuCtxSetCurrent(CUcontext context) {
    const Call call;
    current = context ? context->device : none;
    return CUDA_SUCCESS;
}

cudaError_t cudaGetDeviceCount(int* devices) {
    const Call call;
    *devices = settings().devices;
    return result(0);
}

cudaError_t cudaGetDevice(int* device) {
    const Call call;
    *device = current == none ? 0 : current;
    return cudaSuccess;
}

cudaError_t cudaSetDevice(int device) {
    const Call call;
    if (!known(device)) return result(cudaErrorInvalidDevice);
    choose(device);
    return result(0);
}

cudaError_t cudaRuntimeGetVersion(int* version) {
    *version = CUDART_VERSION;
    return cudaSuccess;
}

cudaError_t cudaDriverGetVersion(int* version) {
    *version = CUDART_VERSION;
    return cudaSuccess;
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* p, int device) {
    const Call call;
    if (!known(device)) return result(cudaErrorInvalidDevice);
    std::memset(p, 0, sizeof *p);
    std::snprintf(p->name, sizeof p->name, "Emulated device %d", device);
    p->totalGlobalMem = settings().memory;
    p->sharedMemPerBlock = sharedBytesOfBlock;
    p->regsPerBlock = 65536;
    p->warpSize = 32;
    p->memPitch = 2147483647;
    p->maxThreadsPerBlock = 1024;
    p->maxThreadsDim[0] = p->maxThreadsDim[1] = 1024;
    p->maxThreadsDim[2] = 64;
    p->maxGridSize[0] = 2147483647;
    p->maxGridSize[1] = p->maxGridSize[2] = 65535;
    p->totalConstMem = 65536;
    p->major = settings().capability / 10;
    p->minor = settings().capability % 10;
    p->textureAlignment = 512;
    p->multiProcessorCount = multiprocessors;
    p->canMapHostMemory = 1;
    return result(0);
}

cudaError_t cudaDeviceGetAttribute(int* value, cudaDeviceAttr which, int device) {
    const Call call;
    if (!known(device)) return result(cudaErrorInvalidDevice);
    switch (which) {
        case cudaDevAttrClockRate:
            *value = 1755000;
            break;
        case cudaDevAttrAsyncEngineCount:
            *value = 3;
            break;
        case cudaDevAttrMultiProcessorCount:
            *value = multiprocessors;
            break;
        case cudaDevAttrCooperativeLaunch:
            *value = 1;
            break;
        case cudaDevAttrMaxSharedMemoryPerBlockOptin:
            *value = sharedBytesAtMost;
            break;
        case cudaDevAttrComputeCapabilityMajor:
            *value = settings().capability / 10;
            break;
        case cudaDevAttrComputeCapabilityMinor:
            *value = settings().capability % 10;
            break;
        default:
            *value = 0;
    }
    return result(0);
}
}
