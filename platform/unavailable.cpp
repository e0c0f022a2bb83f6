#include "platform/unavailable.h"

#include "platform/cuda3.h"
#include "platform/error_texts.h"

namespace platform {
namespace {

thread_local int lastError = cudaSuccess;

template <class... Arguments>
int refuse(Arguments...) {
    return lastError = cudaErrorInsufficientDriver;
}

template <class... Arguments>
void ignore(Arguments...) {}

int version(int* out, int value) {
    *out = value;
    return cudaSuccess;
}

int takeLastError() {
    const int error = lastError;
    lastError = cudaSuccess;
    return error;
}

Table makeTable() {
    Table t{};
    t.version = tableVersion;
    t.name = "none";
    t.runtimeGetVersion = [](int* out) { return version(out, 3020); };
    t.driverGetVersion = [](int* out) { return version(out, 0); };
    t.getDeviceCount = refuse;
    t.getDeviceProperties = refuse;
    t.setDevice = refuse;
    t.getDevice = refuse;
    t.memGetInfo = refuse;
    t.isDevicePointer = [](const void*) { return 0; };
    t.malloc = refuse;
    t.mallocPitch = refuse;
    t.mallocHost = refuse;
    t.free = refuse;
    t.freeHost = refuse;
    t.memcpy = refuse;
    t.memcpyAsync = refuse;
    t.memcpy2D = refuse;
    t.memcpy2DAsync = refuse;
    t.memset = refuse;
    t.streamCreate = refuse;
    t.streamDestroy = refuse;
    t.streamSynchronize = refuse;
    t.threadSynchronize = [] { return int(cudaSuccess); };  // nothing can be under way
    t.getLastError = takeLastError;
    t.getErrorString = errorText;
    t.configureCall = refuse;
    t.setupArgument = refuse;
    t.launch = refuse;
    t.cublasInit = [] { return int(CUBLAS_STATUS_NOT_INITIALIZED); };
    t.cublasShutdown = [] { return int(CUBLAS_STATUS_SUCCESS); };
    t.cublasGetError = [] { return int(CUBLAS_STATUS_SUCCESS); };
    t.copyVector = ignore;
    t.swapVectors = ignore;
    t.scal = ignore;
    t.axpy = ignore;
    t.rot = ignore;
    t.symv = ignore;
    t.trmv = ignore;
    t.gemv = ignore;
    t.gemm = ignore;
    t.symm = ignore;
    t.syrk = ignore;
    t.herk = ignore;
    t.syr2k = ignore;
    t.trmm = ignore;
    t.trsm = ignore;
    return t;
}

}  // namespace

const Table& unavailableTable() {
    static const Table table = makeTable();
    return table;
}

}  // namespace platform
