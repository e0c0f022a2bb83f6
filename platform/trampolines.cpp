// The CUDA 3 and CUBLAS names, each forwarding to the platform that was chosen.
#include "platform/cuda3.h"
#include "platform/registry.h"

namespace {

const platform::Table& table() {
    return *platform::choice().table;
}

platform::Dim3 plain(dim3 d) {
    return {d.x, d.y, d.z};
}

}  // namespace

namespace platform {

bool isDevicePointer(const void* pointer) {
    return table().isDevicePointer(pointer) != 0;
}
int luPanel(char type, int m, int n, void* a, int lda, int* ipiv) {
    return table().luPanel(type, m, n, a, lda, ipiv);
}
int qrPanel(char type, int m, int n, void* a, int lda, void* t, int ldt) {
    return table().qrPanel(type, m, n, a, lda, t, ldt);
}
int qrTail(char type, int m, int n, void* a, int lda, void* tau, void* work, int size) {
    return table().qrTail(type, m, n, a, lda, tau, work, size);
}
int bidiagonalTail(char type, int m, int n, void* a, int lda, void* d, void* e, void* tauq,
                   void* taup, void* work, int size) {
    return table().bidiagonalTail(type, m, n, a, lda, d, e, tauq, taup, work, size);
}
int luSystem(char type, int n, int nrhs, void* a, int lda, int* ipiv, void* b, int ldb) {
    return table().luSystem(type, n, nrhs, a, lda, ipiv, b, ldb);
}
int svd(char type, char jobu, char jobvt, int m, int n, void* a, int lda, void* s, void* u, int ldu,
        void* vt, int ldvt, void* work, int size, void* rwork) {
    return table().svd(type, jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, size, rwork);
}
int panelWidth(Panel kind, char type, int m, int n) {
    return table().panelWidth ? table().panelWidth(kind, type, m, n) : 0;
}
bool sharesMemory() {
    return table().sharesMemory && table().sharesMemory() != 0;
}

}  // namespace platform

cudaError_t cudaRuntimeGetVersion(int* version) {
    return table().runtimeGetVersion(version);
}
cudaError_t cudaDriverGetVersion(int* version) {
    return table().driverGetVersion(version);
}
cudaError_t cudaGetDeviceCount(int* count) {
    return table().getDeviceCount(count);
}
cudaError_t cudaGetDeviceProperties(cudaDeviceProp* properties, int device) {
    return table().getDeviceProperties(properties, device);
}
cudaError_t cudaSetDevice(int device) {
    return table().setDevice(device);
}
cudaError_t cudaGetDevice(int* device) {
    return table().getDevice(device);
}
cudaError_t cudaMemGetInfo(std::size_t* free, std::size_t* total) {
    return table().memGetInfo(free, total);
}

cudaError_t cudaMalloc(void** pointer, std::size_t bytes) {
    return table().malloc(pointer, bytes);
}
cudaError_t cudaMallocPitch(void** pointer, std::size_t* pitch, std::size_t width,
                            std::size_t height) {
    return table().mallocPitch(pointer, pitch, width, height);
}
cudaError_t cudaMallocHost(void** pointer, std::size_t bytes) {
    return table().mallocHost(pointer, bytes);
}
cudaError_t cudaFree(void* pointer) {
    return table().free(pointer);
}
cudaError_t cudaFreeHost(void* pointer) {
    return table().freeHost(pointer);
}

cudaError_t cudaMemcpy(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind) {
    return table().memcpy(to, from, bytes, kind);
}
cudaError_t cudaMemcpyAsync(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind,
                            cudaStream_t stream) {
    return table().memcpyAsync(to, from, bytes, kind, stream);
}
cudaError_t cudaMemcpy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                         std::size_t width, std::size_t height, cudaMemcpyKind kind) {
    return table().memcpy2D(to, toPitch, from, fromPitch, width, height, kind);
}
cudaError_t cudaMemcpy2DAsync(void* to, std::size_t toPitch, const void* from,
                              std::size_t fromPitch, std::size_t width, std::size_t height,
                              cudaMemcpyKind kind, cudaStream_t stream) {
    return table().memcpy2DAsync(to, toPitch, from, fromPitch, width, height, kind, stream);
}
cudaError_t cudaMemset(void* pointer, int value, std::size_t bytes) {
    return table().memset(pointer, value, bytes);
}

cudaError_t cudaStreamCreate(cudaStream_t* stream) {
    return table().streamCreate(stream);
}
cudaError_t cudaStreamDestroy(cudaStream_t stream) {
    return table().streamDestroy(stream);
}
cudaError_t cudaStreamSynchronize(cudaStream_t stream) {
    return table().streamSynchronize(stream);
}
cudaError_t cudaThreadSynchronize() {
    return table().threadSynchronize();
}
cudaError_t cudaGetLastError() {
    return table().getLastError();
}
const char* cudaGetErrorString(cudaError_t error) {
    return table().getErrorString(error);
}

cudaError_t cudaConfigureCall(dim3 grid, dim3 block, std::size_t shared, cudaStream_t stream) {
    return table().configureCall(plain(grid), plain(block), shared, stream);
}
cudaError_t cudaSetupArgument(const void* argument, std::size_t size, std::size_t offset) {
    return table().setupArgument(argument, size, offset);
}
cudaError_t cudaLaunch(const char* stub) {
    return table().launch(platform::findKernel(stub));
}

cublasStatus cublasInit() {
    return table().cublasInit();
}
cublasStatus cublasShutdown() {
    return table().cublasShutdown();
}
cublasStatus cublasGetError() {
    return table().cublasGetError();
}
