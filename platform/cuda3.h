// The CUDA runtime 3 and legacy CUBLAS interface, as far as the library uses it.
//
// Everything above the platform layer is written against these names. They are hidden functions
// of this library that forward to the chosen platform (trampolines.cpp), so they neither clash
// with nor are captured by a CUDA runtime that the application links itself.
#pragma once

#include <cstddef>

#include "platform/table.h"

#pragma GCC visibility push(hidden)

using cudaError_t = int;
constexpr cudaError_t cudaSuccess = 0;
constexpr cudaError_t cudaErrorMissingConfiguration = 1;
constexpr cudaError_t cudaErrorMemoryAllocation = 2;
constexpr cudaError_t cudaErrorInitializationError = 3;
constexpr cudaError_t cudaErrorLaunchFailure = 4;
constexpr cudaError_t cudaErrorInvalidDeviceFunction = 8;
constexpr cudaError_t cudaErrorInvalidConfiguration = 9;
constexpr cudaError_t cudaErrorInvalidDevice = 10;
constexpr cudaError_t cudaErrorInvalidValue = 11;
constexpr cudaError_t cudaErrorInvalidPitchValue = 12;
constexpr cudaError_t cudaErrorInvalidHostPointer = 16;
constexpr cudaError_t cudaErrorInvalidDevicePointer = 17;
constexpr cudaError_t cudaErrorInvalidMemcpyDirection = 21;
constexpr cudaError_t cudaErrorUnknown = 30;
constexpr cudaError_t cudaErrorMemoryValueTooLarge = 32;
constexpr cudaError_t cudaErrorInvalidResourceHandle = 33;
constexpr cudaError_t cudaErrorInsufficientDriver = 35;
constexpr cudaError_t cudaErrorSetOnActiveProcess = 36;
constexpr cudaError_t cudaErrorNoDevice = 38;

using cudaMemcpyKind = int;
constexpr cudaMemcpyKind cudaMemcpyHostToHost = 0;
constexpr cudaMemcpyKind cudaMemcpyHostToDevice = 1;
constexpr cudaMemcpyKind cudaMemcpyDeviceToHost = 2;
constexpr cudaMemcpyKind cudaMemcpyDeviceToDevice = 3;

struct dim3 {
    unsigned x, y, z;
    constexpr dim3(unsigned x_ = 1, unsigned y_ = 1, unsigned z_ = 1) : x(x_), y(y_), z(z_) {}
};

using cudaDeviceProp = platform::DeviceProperties;
using cudaStream_t = platform::Stream;

using cublasStatus = int;
constexpr cublasStatus CUBLAS_STATUS_SUCCESS = 0;
constexpr cublasStatus CUBLAS_STATUS_NOT_INITIALIZED = 1;
constexpr cublasStatus CUBLAS_STATUS_ALLOC_FAILED = 3;
constexpr cublasStatus CUBLAS_STATUS_INVALID_VALUE = 7;
constexpr cublasStatus CUBLAS_STATUS_ARCH_MISMATCH = 8;
constexpr cublasStatus CUBLAS_STATUS_MAPPING_ERROR = 11;
constexpr cublasStatus CUBLAS_STATUS_EXECUTION_FAILED = 13;
constexpr cublasStatus CUBLAS_STATUS_INTERNAL_ERROR = 14;

// Aligned as in CUDA: CUBLAS is given the addresses of scalars.
struct alignas(8) cuComplex {
    float x, y;
};
struct alignas(16) cuDoubleComplex {
    double x, y;
};

extern "C" {
cudaError_t cudaRuntimeGetVersion(int* version);
cudaError_t cudaDriverGetVersion(int* version);
cudaError_t cudaGetDeviceCount(int* count);
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device);
cudaError_t cudaSetDevice(int device);
cudaError_t cudaGetDevice(int* device);
cudaError_t cudaMemGetInfo(std::size_t* free, std::size_t* total);

cudaError_t cudaMalloc(void** pointer, std::size_t bytes);
cudaError_t cudaMallocPitch(void** pointer, std::size_t* pitch, std::size_t width,
                            std::size_t height);
cudaError_t cudaMallocHost(void** pointer, std::size_t bytes);
cudaError_t cudaFree(void* pointer);
cudaError_t cudaFreeHost(void* pointer);

cudaError_t cudaMemcpy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind);
cudaError_t cudaMemcpyAsync(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind,
                            cudaStream_t stream);
cudaError_t cudaMemcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                         std::size_t width, std::size_t height, cudaMemcpyKind kind);
cudaError_t cudaMemcpy2DAsync(void* to, std::size_t toPitch, const void* from,
                              std::size_t fromPitch, std::size_t width, std::size_t height,
                              cudaMemcpyKind kind, cudaStream_t stream);
cudaError_t cudaMemset(void* pointer, int value, std::size_t bytes);

cudaError_t cudaStreamCreate(cudaStream_t* stream);
cudaError_t cudaStreamDestroy(cudaStream_t stream);
cudaError_t cudaStreamSynchronize(cudaStream_t stream);
cudaError_t cudaThreadSynchronize();
cudaError_t cudaGetLastError();
const char* cudaGetErrorString(cudaError_t error);

cudaError_t cudaConfigureCall(dim3 grid, dim3 block, std::size_t shared, cudaStream_t stream);
cudaError_t cudaSetupArgument(const void* argument, std::size_t size, std::size_t offset);
cudaError_t cudaLaunch(const char* stub);

void** __cudaRegisterFatBinary(void* image);
void __cudaRegisterFunction(void** handle, const char* stub, char* deviceFunction,
                            const char* deviceName, int threadLimit, void* tid, void* bid,
                            void* blockDim, void* gridDim, int* warpSize);
void __cudaUnregisterFatBinary(void** handle);

cublasStatus cublasInit();
cublasStatus cublasShutdown();
cublasStatus cublasGetError();

void cublasScopy(int n, const float* x, int incx, float* y, int incy);
void cublasDcopy(int n, const double* x, int incx, double* y, int incy);
void cublasCcopy(int n, const cuComplex* x, int incx, cuComplex* y, int incy);
void cublasZcopy(int n, const cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy);
void cublasSswap(int n, float* x, int incx, float* y, int incy);
void cublasDswap(int n, double* x, int incx, double* y, int incy);
void cublasCswap(int n, cuComplex* x, int incx, cuComplex* y, int incy);
void cublasZswap(int n, cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy);
void cublasSscal(int n, float alpha, float* x, int incx);
void cublasDscal(int n, double alpha, double* x, int incx);
void cublasCscal(int n, cuComplex alpha, cuComplex* x, int incx);
void cublasZscal(int n, cuDoubleComplex alpha, cuDoubleComplex* x, int incx);
void cublasSaxpy(int n, float alpha, const float* x, int incx, float* y, int incy);
void cublasDaxpy(int n, double alpha, const double* x, int incx, double* y, int incy);
void cublasCaxpy(int n, cuComplex alpha, const cuComplex* x, int incx, cuComplex* y, int incy);
void cublasZaxpy(int n, cuDoubleComplex alpha, const cuDoubleComplex* x, int incx,
                 cuDoubleComplex* y, int incy);
void cublasSrot(int n, float* x, int incx, float* y, int incy, float c, float s);
void cublasDrot(int n, double* x, int incx, double* y, int incy, double c, double s);
void cublasCsrot(int n, cuComplex* x, int incx, cuComplex* y, int incy, float c, float s);
void cublasZdrot(int n, cuDoubleComplex* x, int incx, cuDoubleComplex* y, int incy, double c,
                 double s);
void cublasSsymv(char uplo, int n, float alpha, const float* a, int lda, const float* x, int incx,
                 float beta, float* y, int incy);
void cublasDsymv(char uplo, int n, double alpha, const double* a, int lda, const double* x,
                 int incx, double beta, double* y, int incy);
void cublasCsymv(char uplo, int n, cuComplex alpha, const cuComplex* a, int lda, const cuComplex* x,
                 int incx, cuComplex beta, cuComplex* y, int incy);
void cublasZsymv(char uplo, int n, cuDoubleComplex alpha, const cuDoubleComplex* a, int lda,
                 const cuDoubleComplex* x, int incx, cuDoubleComplex beta, cuDoubleComplex* y,
                 int incy);
void cublasStrmv(char uplo, char trans, char diag, int n, const float* a, int lda, float* x,
                 int incx);
void cublasDtrmv(char uplo, char trans, char diag, int n, const double* a, int lda, double* x,
                 int incx);
void cublasCtrmv(char uplo, char trans, char diag, int n, const cuComplex* a, int lda, cuComplex* x,
                 int incx);
void cublasZtrmv(char uplo, char trans, char diag, int n, const cuDoubleComplex* a, int lda,
                 cuDoubleComplex* x, int incx);
void cublasSgemv(char trans, int m, int n, float alpha, const float* a, int lda, const float* x,
                 int incx, float beta, float* y, int incy);
void cublasDgemv(char trans, int m, int n, double alpha, const double* a, int lda, const double* x,
                 int incx, double beta, double* y, int incy);
void cublasCgemv(char trans, int m, int n, cuComplex alpha, const cuComplex* a, int lda,
                 const cuComplex* x, int incx, cuComplex beta, cuComplex* y, int incy);
void cublasZgemv(char trans, int m, int n, cuDoubleComplex alpha, const cuDoubleComplex* a, int lda,
                 const cuDoubleComplex* x, int incx, cuDoubleComplex beta, cuDoubleComplex* y,
                 int incy);
void cublasSgemm(char transa, char transb, int m, int n, int k, float alpha, const float* a,
                 int lda, const float* b, int ldb, float beta, float* c, int ldc);
void cublasDgemm(char transa, char transb, int m, int n, int k, double alpha, const double* a,
                 int lda, const double* b, int ldb, double beta, double* c, int ldc);
void cublasCgemm(char transa, char transb, int m, int n, int k, cuComplex alpha, const cuComplex* a,
                 int lda, const cuComplex* b, int ldb, cuComplex beta, cuComplex* c, int ldc);
void cublasZgemm(char transa, char transb, int m, int n, int k, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb,
                 cuDoubleComplex beta, cuDoubleComplex* c, int ldc);
void cublasSsymm(char side, char uplo, int m, int n, float alpha, const float* a, int lda,
                 const float* b, int ldb, float beta, float* c, int ldc);
void cublasDsymm(char side, char uplo, int m, int n, double alpha, const double* a, int lda,
                 const double* b, int ldb, double beta, double* c, int ldc);
void cublasChemm(char side, char uplo, int m, int n, cuComplex alpha, const cuComplex* a, int lda,
                 const cuComplex* b, int ldb, cuComplex beta, cuComplex* c, int ldc);
void cublasZhemm(char side, char uplo, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb,
                 cuDoubleComplex beta, cuDoubleComplex* c, int ldc);
void cublasSsyrk(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                 float beta, float* c, int ldc);
void cublasDsyrk(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                 double beta, double* c, int ldc);
void cublasCsyrk(char uplo, char trans, int n, int k, cuComplex alpha, const cuComplex* a, int lda,
                 cuComplex beta, cuComplex* c, int ldc);
void cublasZsyrk(char uplo, char trans, int n, int k, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex beta, cuDoubleComplex* c,
                 int ldc);
void cublasCherk(char uplo, char trans, int n, int k, float alpha, const cuComplex* a, int lda,
                 float beta, cuComplex* c, int ldc);
void cublasZherk(char uplo, char trans, int n, int k, double alpha, const cuDoubleComplex* a,
                 int lda, double beta, cuDoubleComplex* c, int ldc);
void cublasSsyr2k(char uplo, char trans, int n, int k, float alpha, const float* a, int lda,
                  const float* b, int ldb, float beta, float* c, int ldc);
void cublasDsyr2k(char uplo, char trans, int n, int k, double alpha, const double* a, int lda,
                  const double* b, int ldb, double beta, double* c, int ldc);
void cublasCher2k(char uplo, char trans, int n, int k, cuComplex alpha, const cuComplex* a, int lda,
                  const cuComplex* b, int ldb, float beta, cuComplex* c, int ldc);
void cublasZher2k(char uplo, char trans, int n, int k, cuDoubleComplex alpha,
                  const cuDoubleComplex* a, int lda, const cuDoubleComplex* b, int ldb, double beta,
                  cuDoubleComplex* c, int ldc);
void cublasStrmm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb);
void cublasDtrmm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb);
void cublasCtrmm(char side, char uplo, char transa, char diag, int m, int n, cuComplex alpha,
                 const cuComplex* a, int lda, cuComplex* b, int ldb);
void cublasZtrmm(char side, char uplo, char transa, char diag, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex* b, int ldb);
void cublasStrsm(char side, char uplo, char transa, char diag, int m, int n, float alpha,
                 const float* a, int lda, float* b, int ldb);
void cublasDtrsm(char side, char uplo, char transa, char diag, int m, int n, double alpha,
                 const double* a, int lda, double* b, int ldb);
void cublasCtrsm(char side, char uplo, char transa, char diag, int m, int n, cuComplex alpha,
                 const cuComplex* a, int lda, cuComplex* b, int ldb);
void cublasZtrsm(char side, char uplo, char transa, char diag, int m, int n, cuDoubleComplex alpha,
                 const cuDoubleComplex* a, int lda, cuDoubleComplex* b, int ldb);
}

namespace platform {

// Beyond CUDA 3: whether an address is memory of the device, and what else table.h has of its own.
bool isDevicePointer(const void* pointer);
int luPanel(char type, int m, int n, void* a, int lda, int* ipiv);
int qrPanel(char type, int m, int n, void* a, int lda, void* t, int ldt);
int qrTail(char type, int m, int n, void* a, int lda, void* tau, void* work, int size);
int bidiagonalTail(char type, int m, int n, void* a, int lda, void* d, void* e, void* tauq,
                   void* taup, void* work, int size);
int luSystem(char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb);
int svd(char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s, void* u, int ldu,
        void* vt, int ldvt, void* work, int size, void* rwork);
int panelWidth(Panel kind, char type, int m, int n);
bool sharesMemory();

// Which platform runs and why it was chosen; chooses it if no call has yet.
struct Choice {
    const Table* table;
    const char* reason;
    bool available;  // or the reason is why nothing can run
};
const Choice& choice();

// The same for the lumo command, which uses the shared library of its own version: exported, but
// no part of the interface.
extern "C" __attribute__((visibility("default"))) const Choice* lumo_private_platform();

}  // namespace platform

#pragma GCC visibility pop
