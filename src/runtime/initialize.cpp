// lumoInitialize, lumoShutdown, lumoFreeBuffers.
#include <cstdlib>

#include "common/threads.h"
#include "cudalib/workspace_pool.h"
#include "runtime/devices.h"
#include "runtime/frame.h"
#include "runtime/reset.h"

namespace {

constexpr int oldestVersion = 3020;

bool versionsSuffice() {
    int runtime = 0, driver = 0;
    cudalib::checkCudaError(cudaRuntimeGetVersion(&runtime));
    cudalib::checkCudaError(cudaDriverGetVersion(&driver));
    return runtime >= oldestVersion && driver >= oldestVersion && driver >= runtime;
}

void activateBestDevice() {
    const cudaError_t error = cudaSetDevice(lumo::bestDevice(0.5, 0.5));
    if (error == cudaSuccess) return;
    // A device is active already: the one that the application chose, which stays.
    if (error == cudaErrorSetOnActiveProcess)
        cudaGetLastError();
    else
        throw cudalib::CudaRuntimeException(error);
}

lumoStatus bringUp() {
    if (!versionsSuffice()) return lumoInsufficientRuntime;
    if (lumo::usableDeviceCount() == 0) return lumoNoHardware;
    activateBestDevice();
    // Other failures of CUBLAS surface at the first check after its first use.
    if (cublasInit() == CUBLAS_STATUS_ALLOC_FAILED) return lumoInsufficientMemory;
    int device = 0;
    cudalib::checkCudaError(cudaGetDevice(&device));
    lumo::setDeviceAbilities(lumo::deviceCapability(device));
    // Some CPU BLAS and the application may each bring their own copy of one OpenMP runtime.
    setenv("KMP_DUPLICATE_LIB_OK", "TRUE", 1);
    lumo::setInitialized(true);
    return lumoNoError;
}

}  // namespace

void lumo::resetRuntime() {
    resetState();
    clearHooks();
    forgetThreads();
    forgetDevices();
}

lumoStatus lumoInitialize() {
    lumo::setInfo(0);
    lumoStatus decided = lumoNoError;
    const lumoStatus thrown = lumo::guarded([&] {
        boost::mutex::scoped_lock lock(lumo::runtimeMutex());
        lumo::registerThread(lumo::threadId());
        if (!lumo::initialized()) decided = bringUp();
        // On a machine that cannot run the library this may fail too, and tell less.
        if (decided == lumoNoError)
            cudalib::synchronizeAndCheck();
        else
            lumo::guarded(cudalib::synchronizeAndCheck);
    });
    if (decided != lumoNoError) lumo::setInfo(0);
    const lumoStatus status = decided != lumoNoError ? decided : thrown;
    lumo::setLastStatus(status);
    return status;
}

// These two touch neither status nor info; that there is no thread id, or no mutex, to be had
// leaves nothing that they could do.
void lumoShutdown() try {
    boost::mutex::scoped_lock lock(lumo::runtimeMutex());
    if (!lumo::initialized()) return;
    cudalib::WorkspacePool::releaseIdleOfThisThread();
    lumo::clearHooks();  // for all threads, also those that stay
    lumo::unregisterThread(lumo::threadId());
    if (lumo::registeredThreads() > 0) return;
    cudalib::WorkspacePool::releaseIdle();
    cublasShutdown();
    cublasGetError();
    lumo::setInitialized(false);
} catch (...) {
}

void lumoFreeBuffers() try {
    boost::mutex::scoped_lock lock(lumo::runtimeMutex());
    if (!lumo::initialized()) return;
    cudalib::WorkspacePool::releaseIdleOfThisThread();
    platform::releaseKept();
} catch (...) {
}
