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
thread_local int errorWord = legacySuccess;

// A new handle needs tens of megabytes on the device, and CUBLAS says "not initialized" where it
// does not get them.
cublasStatus_t create(cublasHandle_t& handle) {
    const cublasStatus_t status = cublasCreate(&handle);
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
    if (errorWord == legacySuccess) errorWord = status;
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
    return CUBLAS_STATUS_SUCCESS;
}

// After a failure the next call that needs a handle tries again.
int blasInit() {
    bindContext();
    OnDevice here;
    {
        std::lock_guard<std::mutex> lock(handles().mutex);
        handles().ready = true;
    }
    cublasHandle_t handle = nullptr;
    return legacyStatus(blasHandle(handle));
}

int blasShutdown() {
    Handles& h = handles();
    std::lock_guard<std::mutex> lock(h.mutex);
    h.ready = false;
    ++h.generation;
    // From an exit handler that runs late, there may be no runtime left to call.
    int device = 0;
    if (cudaGetDevice(&device) != cudaErrorCudartUnloading) {
        OnDevice here;
        for (cublasHandle_t handle : h.all) cublasDestroy(handle);
        trimPageLocked();
    }
    h.all.clear();
    h.idle.clear();
    return legacySuccess;
}

int blasGetError() {
    const int status = errorWord;
    errorWord = legacySuccess;
    return status;
}

void gemm(char type, char transa, char transb, int m, int n, int k, const void* alpha,
          const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
    blasCall(platform::gemmOperands(transa, transb, m, n, k, a, lda, b, ldb, c, ldc).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSgemm, cublasDgemm, cublasCgemm, cublasZgemm,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, operation(transa), operation(transb),
                                                       m, n, k, as<T>(alpha), as<T>(a), lda,
                                                       as<T>(b), ldb, as<T>(beta), as<T>(c), ldc);
                                    });
             });
}

void symm(char type, char side, char uplo, int m, int n, const void* alpha, const void* a, int lda,
          const void* b, int ldb, const void* beta, void* c, int ldc) {
    blasCall(platform::symmOperands(side, uplo, m, n, a, lda, b, ldb, c, ldc).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSsymm, cublasDsymm, cublasChemm, cublasZhemm,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, sideMode(side), fillMode(uplo), m, n,
                                                       as<T>(alpha), as<T>(a), lda, as<T>(b), ldb,
                                                       as<T>(beta), as<T>(c), ldc);
                                    });
             });
}

void syrk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    blasCall(
        platform::syrkOperands(uplo, trans, platform::syrkTransposes(type), n, k, a, lda, c, ldc)
            .valid,
        [&](cublasHandle_t handle) {
            return withRoutine(type, cublasSsyrk, cublasDsyrk, cublasCsyrk, cublasZsyrk,
                               [&](auto routine, auto element) {
                                   using T = typename decltype(element)::Type;
                                   return routine(handle, fillMode(uplo), operation(trans), n, k,
                                                  as<T>(alpha), as<T>(a), lda, as<T>(beta),
                                                  as<T>(c), ldc);
                               });
        });
}

void herk(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a, int lda,
          const void* beta, void* c, int ldc) {
    blasCall(platform::syrkOperands(uplo, trans, "C", n, k, a, lda, c, ldc).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSsyrk, cublasDsyrk, cublasCherk, cublasZherk,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        using Real = typename decltype(element)::Real;
                                        return routine(handle, fillMode(uplo), operation(trans), n,
                                                       k, as<Real>(alpha), as<T>(a), lda,
                                                       as<Real>(beta), as<T>(c), ldc);
                                    });
             });
}

void syr2k(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
           int lda, const void* b, int ldb, const void* beta, void* c, int ldc) {
    blasCall(platform::syr2kOperands(uplo, trans, platform::syr2kTransposes(type), n, k, a, lda, b,
                                     ldb, c, ldc)
                 .valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasSsyr2k, cublasDsyr2k, cublasCher2k, cublasZher2k,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        using Real = typename decltype(element)::Real;
                                        return routine(handle, fillMode(uplo), operation(trans), n,
                                                       k, as<T>(alpha), as<T>(a), lda, as<T>(b),
                                                       ldb, as<Real>(beta), as<T>(c), ldc);
                                    });
             });
}

// The current interface multiplies out of place and takes its input as the place.
void trmm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasStrmm, cublasDtrmm, cublasCtrmm, cublasZtrmm,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, sideMode(side), fillMode(uplo),
                                                       operation(transa), diagType(diag), m, n,
                                                       as<T>(alpha), as<T>(a), lda, as<T>(b), ldb,
                                                       as<T>(b), ldb);
                                    });
             });
}

void trsm(char type, char side, char uplo, char transa, char diag, int m, int n, const void* alpha,
          const void* a, int lda, void* b, int ldb) {
    blasCall(platform::triangularOperands(side, uplo, transa, diag, m, n, a, lda, b, ldb).valid,
             [&](cublasHandle_t handle) {
                 return withRoutine(type, cublasStrsm, cublasDtrsm, cublasCtrsm, cublasZtrsm,
                                    [&](auto routine, auto element) {
                                        using T = typename decltype(element)::Type;
                                        return routine(handle, sideMode(side), fillMode(uplo),
                                                       operation(transa), diagType(diag), m, n,
                                                       as<T>(alpha), as<T>(a), lda, as<T>(b), ldb);
                                    });
             });
}

}  // namespace gpu
