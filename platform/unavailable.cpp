#include "platform/unavailable.h"

#include "platform/cuda3_errors.h"
#include "platform/error_texts.h"

namespace platform {
namespace {

using namespace cuda3;

thread_local int lastError = cudaSuccess;

template <class Result, class... Arguments>
Result refuse(Arguments...) {
    if constexpr (std::is_same_v<Result, int>) return lastError = cudaErrorInsufficientDriver;
    return Result();
}

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
#define ENTRY(kind, result, name, parameters) t.name = refuse;
#include "platform/entries.inc"
    eachBlas(t, [](auto& blas) {
#define BLAS_ENTRY(name, S, D, C, Z, parameters) blas.name = refuse;
#include "platform/entries.inc"
    });
    t.runtimeGetVersion = [](int* out) { return version(out, 3020); };
    t.driverGetVersion = [](int* out) { return version(out, 0); };
    t.isDevicePointer = [](const void*) { return 0; };
    t.cooperativeBlocks = [](const Kernel*, int) { return 0; };
    t.threadSynchronize = [] { return cudaSuccess; };  // nothing can be under way
    t.getLastError = takeLastError;
    t.getErrorString = errorText;
    t.cublasInit = [] { return CUBLAS_STATUS_NOT_INITIALIZED; };
    t.cublasShutdown = [] { return CUBLAS_STATUS_SUCCESS; };
    t.cublasGetError = [] { return CUBLAS_STATUS_SUCCESS; };
    return t;
}

}  // namespace

const Table& unavailableTable() {
    static const Table table = makeTable();
    return table;
}

}  // namespace platform
