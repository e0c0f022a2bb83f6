// The calling thread's device, ours for the time of a call.
//
// The runtime has no word for "no device chosen yet": it says 0, and to choose that would make a
// context on a device that nobody asked for, and that may be another process's alone. The driver
// has one, and what it holds as current is all that an application's runtime and ours share.
#include <cuda.h>
#include <dlfcn.h>

#include <atomic>

#include "platform/cuda/device.h"
#include "platform/cuda/errors.h"

namespace gpu {
namespace {

// The driver is the machine's: it is looked up, not linked.
struct Driver {
    decltype(&cuCtxGetCurrent) getCurrent = nullptr;
    decltype(&cuCtxSetCurrent) setCurrent = nullptr;

    Driver() {
        void* library = dlopen("libcuda.so.1", RTLD_LAZY | RTLD_LOCAL);
        if (!library) return;
        auto get = dlsym(library, "cuCtxGetCurrent"), set = dlsym(library, "cuCtxSetCurrent");
        if (!get || !set) return;
        getCurrent = reinterpret_cast<decltype(getCurrent)>(get);
        setCurrent = reinterpret_cast<decltype(setCurrent)>(set);
    }
    bool known() const { return getCurrent != nullptr; }
    // None, too, before the driver is initialised and when it is no more.
    CUcontext current() const {
        CUcontext context = nullptr;
        return getCurrent(&context) == CUDA_SUCCESS ? context : nullptr;
    }
};

const Driver& driver() {
    static const Driver instance;
    return instance;
}

// Our device's context, once it has been current.
std::atomic<CUcontext> ours{nullptr};

}  // namespace

void forgetContext() {
    ours = nullptr;
}

OnDevice::OnDevice() {
    const int device = processDevice();
    if (!driver().known()) {
        if (cudaGetDevice(&applicationsDevice_) != cudaSuccess) {
            cudaGetLastError();
            applicationsDevice_ = device;
        }
        switched_ = applicationsDevice_ != device;
        if (switched_) reported(cudaSetDevice(device));
        return;
    }
    const CUcontext context = driver().current(), wanted = ours;
    applicationsContext_ = context;
    switched_ = !wanted || context != wanted;
    if (!switched_) return;
    // To make a known context current is the cheaper way, but for the first call and for one after
    // the application has reset the device.
    if (wanted && driver().setCurrent(wanted) == CUDA_SUCCESS) return;
    if (reported(cudaSetDevice(device)) == cudaSuccess) ours = driver().current();
}

OnDevice::~OnDevice() {
    if (!switched_) return;
    if (driver().known())
        driver().setCurrent(static_cast<CUcontext>(applicationsContext_));
    else
        cudaSetDevice(applicationsDevice_);
}

}  // namespace gpu
