// The seam between the library and whatever executes it.
//
// A platform is one table of functions: the CUDA 3 runtime and the legacy CUBLAS interface, in
// plain types. No type here carries a name of the CUDA toolkit's, so a plugin can include this
// header next to the toolkit's own. Error codes are CUDA 3 and legacy CUBLAS numbers as int.
#pragma once

#include <cstddef>

namespace platform {

constexpr unsigned tableVersion = 3;

struct Dim3 {
    unsigned x, y, z;
};

// The CUDA 3 device properties, field by field.
struct DeviceProperties {
    char name[256];
    std::size_t totalGlobalMem;
    std::size_t sharedMemPerBlock;
    int regsPerBlock;
    int warpSize;
    std::size_t memPitch;
    int maxThreadsPerBlock;
    int maxThreadsDim[3];
    int maxGridSize[3];
    int clockRate;  // kilohertz
    std::size_t totalConstMem;
    int major;
    int minor;
    std::size_t textureAlignment;
    int deviceOverlap;
    int multiProcessorCount;
    int kernelExecTimeoutEnabled;
    int integrated;
    int canMapHostMemory;
    int computeMode;
};

// One launch as the executing CPU sees it.
struct Launch {
    const unsigned char* arguments;  // the block that cudaSetupArgument filled
    Dim3 grid;
    Dim3 block;
    // Where a kernel reaches the memory behind a device pointer. Null if nothing is there.
    void* (*address)(void* devicePointer);
    // Runs item(context, k) for every k below count, on as many threads as are worth waking for
    // `work` elementary operations.
    void (*parallel)(std::size_t count, std::size_t work, void (*item)(const void*, std::size_t),
                     const void* context);
    int threads;  // that there are
};

// A kernel instance: the name it is registered under and, for a CPU, its body. `run` returns
// false, having done nothing, if a pointer argument leads nowhere.
struct Kernel {
    const char* name;
    bool (*run)(const Launch&);
};

// What the library registers as a unit's "fat binary".
struct FatBinary {
    const Kernel* kernels;
    std::size_t count;
};

using Stream = void*;

// What the algorithms work in panels for: to factorise an m x n matrix, or to apply reflectors of
// order m to n rows or columns.
enum class Panel { lu, qr, bidiagonal, reflectors };

struct Table {
    unsigned version;  // tableVersion of the header it was compiled with
    const char* name;  // "software", "cuda"

    int (*runtimeGetVersion)(int*);
    int (*driverGetVersion)(int*);
    int (*getDeviceCount)(int*);
    int (*getDeviceProperties)(DeviceProperties*, int device);
    int (*setDevice)(int);
    int (*getDevice)(int*);
    int (*memGetInfo)(std::size_t* free, std::size_t* total);
    // 1 for memory of the device, 0 for any other address.
    int (*isDevicePointer)(const void*);

    int (*malloc)(void**, std::size_t);
    int (*mallocPitch)(void**, std::size_t* pitch, std::size_t width, std::size_t height);
    int (*mallocHost)(void**, std::size_t);
    int (*free)(void*);
    int (*freeHost)(void*);

    int (*memcpy)(void*, const void*, std::size_t, int kind);
    int (*memcpyAsync)(void*, const void*, std::size_t, int kind, Stream);
    int (*memcpy2D)(void*, std::size_t, const void*, std::size_t, std::size_t width,
                    std::size_t height, int kind);
    int (*memcpy2DAsync)(void*, std::size_t, const void*, std::size_t, std::size_t width,
                         std::size_t height, int kind, Stream);
    int (*memset)(void*, int value, std::size_t);

    int (*streamCreate)(Stream*);
    int (*streamDestroy)(Stream);
    int (*streamSynchronize)(Stream);
    int (*threadSynchronize)();
    int (*getLastError)();
    const char* (*getErrorString)(int);

    int (*configureCall)(Dim3 grid, Dim3 block, std::size_t shared, Stream);
    int (*setupArgument)(const void*, std::size_t size, std::size_t offset);
    int (*launch)(const Kernel*);

    int (*cublasInit)();
    int (*cublasShutdown)();
    int (*cublasGetError)();

    // BLAS, one entry for the four element types: `type` is 'S', 'D', 'C' or 'Z', and a scalar
    // points to one element, where nothing else is said.
    void (*copyVector)(char type, int n, const void* x, int incx, void* y, int incy);
    void (*swapVectors)(char type, int n, void* x, int incx, void* y, int incy);
    void (*scal)(char type, int n, const void* alpha, void* x, int incx);
    void (*axpy)(char type, int n, const void* alpha, const void* x, int incx, void* y, int incy);
    // x := c x + s y, y := c y - s x, with a real cosine and sine.
    void (*rot)(char type, int n, void* x, int incx, void* y, int incy, const void* c,
                const void* s);
    // A is symmetric for every type.
    void (*symv)(char type, char uplo, int n, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);
    void (*trmv)(char type, char uplo, char trans, char diag, int n, const void* a, int lda,
                 void* x, int incx);
    void (*gemv)(char type, char trans, int m, int n, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);
    void (*gemm)(char type, char transa, char transb, int m, int n, int k, const void* alpha,
                 const void* a, int lda, const void* b, int ldb, const void* beta, void* c,
                 int ldc);
    // A is symmetric for 'S' and 'D', Hermitian for 'C' and 'Z'.
    void (*symm)(char type, char side, char uplo, int m, int n, const void* alpha, const void* a,
                 int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
    void (*syrk)(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
                 int lda, const void* beta, void* c, int ldc);
    // 'C' and 'Z' only; alpha and beta are real.
    void (*herk)(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
                 int lda, const void* beta, void* c, int ldc);
    // Symmetric for 'S' and 'D', Hermitian with a real beta for 'C' and 'Z'.
    void (*syr2k)(char type, char uplo, char trans, int n, int k, const void* alpha, const void* a,
                  int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
    void (*trmm)(char type, char side, char uplo, char transa, char diag, int m, int n,
                 const void* alpha, const void* a, int lda, void* b, int ldb);
    void (*trsm)(char type, char side, char uplo, char transa, char diag, int m, int n,
                 const void* alpha, const void* a, int lda, void* b, int ldb);

    // The CPU's part of the algorithms, on operands in host memory; each returns LAPACK's info. A
    // plugin may leave these to the library: null.
    int (*luPanel)(char type, int m, int n, void* a, int lda, int* ipiv);         // xGETRF
    int (*qrPanel)(char type, int m, int n, void* a, int lda, void* t, int ldt);  // xGEQRT3
    // What is left behind the panels: xGEQRF and xGEBRD. A size of -1 asks for the workspace's.
    int (*qrTail)(char type, int m, int n, void* a, int lda, void* tau, void* work, int size);
    int (*bidiagonalTail)(char type, int m, int n, void* a, int lda, void* d, void* e, void* tauq,
                          void* taup, void* work, int size);
    // Whole problems, small ones: xGESV, and xGESVD, `rwork` for complex elements only.
    int (*luSystem)(char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb);
    int (*svd)(char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s, void* u,
               int ldu, void* vt, int ldvt, void* work, int size, void* rwork);

    // The width of a panel of an m x n matrix that this platform wants, 0 for the library's own.
    // Null: it has no wishes.
    int (*panelWidth)(Panel kind, char type, int m, int n);
    // Whether device memory is the host's, so that either may work on the other's. Null: it is not.
    int (*sharesMemory)();
};

// The one symbol a plugin exports, as "lumoPlatformTable". Returns null if it was built for
// another table version.
using TableFunction = const Table* (*)(unsigned version);

}  // namespace platform
