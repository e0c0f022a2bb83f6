// Legacy CUBLAS over the current interface: a handle and an error word for each thread.
#include "platform/cuda/blas_call.h"

#include <mutex>
#include <vector>

namespace gpu {
namespace {

// All handles since the last start, and those that no thread uses. A thread returns its own when
// it ends, without calling CUBLAS, which may be gone by then.
struct Handles {
    std::mutex mutex;
    std::vector<cublasHandle_t> all, idle;
    unsigned generation = 0;  // a shutdown ends one, and with it every thread's lease
    bool ready = false;
};

Handles& handles() {
    static auto* instance = new Handles;
    return *instance;
}

struct Lease {
    cublasHandle_t handle = nullptr;
    unsigned generation = 0;
    ~Lease() {
        if (!handle) return;
        std::lock_guard<std::mutex> lock(handles().mutex);
        if (generation == handles().generation) handles().idle.push_back(handle);
    }
};

thread_local Lease lease;
thread_local cudaStream_t kernelStream = nullptr;
thread_local int errorWord = cuda3::CUBLAS_STATUS_SUCCESS;

// A new handle needs tens of megabytes on the device, and CUBLAS says "not initialized" where it
// does not get them.
cublasStatus_t create(cublasHandle_t& handle) {
    cublasStatus_t status = cublasCreate(&handle);
    if (status == CUBLAS_STATUS_SUCCESS) return status;
    releaseKept();
    status = cublasCreate(&handle);
    if (status != CUBLAS_STATUS_NOT_INITIALIZED) return status;
    constexpr std::size_t enough = std::size_t(256) << 20;
    std::size_t free = 0, total = 0;
    if (cudaMemGetInfo(&free, &total) == cudaSuccess)
        return free < enough ? CUBLAS_STATUS_ALLOC_FAILED : status;
    cudaGetLastError();
    return status;
}

}  // namespace

void noteBlas(int status) {
    if (errorWord == cuda3::CUBLAS_STATUS_SUCCESS) errorWord = status;
}

cublasStatus_t blasHandle(cublasHandle_t& handle) {
    Handles& h = handles();
    std::lock_guard<std::mutex> lock(h.mutex);
    if (!h.ready) return CUBLAS_STATUS_NOT_INITIALIZED;
    if (!lease.handle || lease.generation != h.generation) {
        lease.handle = nullptr;
        if (!h.idle.empty()) {
            lease.handle = h.idle.back();
            h.idle.pop_back();
        } else {
            cublasHandle_t made = nullptr;
            if (const cublasStatus_t status = create(made)) return status;
            h.all.push_back(made);
            lease.handle = made;
        }
        lease.generation = h.generation;
    }
    handle = lease.handle;
    return cublasSetStream(handle, kernelStream);
}

// After a failure the next call that needs a handle tries again.
int cublasInit() {
    bindContext();
    OnDevice here;
    {
        std::lock_guard<std::mutex> lock(handles().mutex);
        handles().ready = true;
    }
    cublasHandle_t handle = nullptr;
    return legacyStatus(blasHandle(handle));
}

int cublasShutdown() {
    Handles& h = handles();
    std::lock_guard<std::mutex> lock(h.mutex);
    h.ready = false;
    ++h.generation;
    // From an exit handler that runs late, there may be no runtime left to call.
    int device = 0;
    if (cudaGetDevice(&device) != cudaErrorCudartUnloading) {
        OnDevice here;
        for (cublasHandle_t handle : h.all) cublasDestroy(handle);
        releaseKept();
    }
    h.all.clear();
    h.idle.clear();
    return cuda3::CUBLAS_STATUS_SUCCESS;
}

int cublasSetKernelStream(platform::Stream stream) {
    kernelStream = static_cast<cudaStream_t>(stream);
    return cuda3::CUBLAS_STATUS_SUCCESS;
}

int cublasGetError() {
    const int status = errorWord;
    errorWord = cuda3::CUBLAS_STATUS_SUCCESS;
    return status;
}

}  // namespace gpu
