// Where the memory of a ManagedMemory comes from and how it is copied.
#pragma once

#include <cstddef>

#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"
#include "cudalib/workspace_pool.h"

namespace cudalib {

// Rows and columns of a matrix.
struct Extent {
    unsigned rows, columns;
};

// Whether a * b * c * ... fits size_t, where it is stored.
template <class... Factors>
bool multiply(std::size_t& product, Factors... factors) {
    product = 1;
    bool overflow = false;
    ((overflow |= __builtin_mul_overflow(product, std::size_t(factors), &product)), ...);
    return !overflow;
}

// a * b * c * ... ; a product beyond size_t is memory that no machine has.
template <class... Factors>
std::size_t checkedProduct(Factors... factors) {
    std::size_t product;
    if (!multiply(product, factors...))
        throw CudaMemoryException("allocation beyond the address space");
    return product;
}

// Runs an allocation; if memory is short, gives back what the pools hold idle and tries again.
template <class Allocate>
void allocateOrThrow(Allocate allocate) {
    cudaError_t error = allocate();
    if (error == cudaErrorMemoryAllocation || error == cudaErrorMemoryValueTooLarge) {
        cudaGetLastError();
        if (WorkspacePool::releaseIdle()) error = allocate();
    }
    checkCudaError(error);
}

// A block's allocator and the pitch of the block it allocated. Copies raise by checkCudaError.
template <class T>
class ManagedMemoryAllocatorInterface {
  public:
    virtual T* allocate(Extent extent, unsigned depth) = 0;
    virtual void free(T* pointer) = 0;
    // `depth` packed host matrices, their leading dimension the number of rows.
    virtual void copyFromPackedHost(T* device, const T* host, Extent extent, unsigned depth) = 0;
    // `count` elements in column-major order from element `first` on of both matrices.
    virtual void copyFromHostStrided(T* device, const T* host, std::size_t hostLd, Extent extent,
                                     std::size_t first, std::size_t count) = 0;
    // Pitch and slice of each side in elements.
    virtual void copyFromHost2D(T* device, std::size_t devicePitch, std::size_t deviceSlice,
                                const T* host, std::size_t hostPitch, std::size_t hostSlice,
                                Extent extent, unsigned depth) = 0;
    virtual void copyToPackedHost(T* host, const T* device, Extent extent, unsigned depth) = 0;
    virtual void copyToHostStrided(T* host, std::size_t hostLd, const T* device, Extent extent,
                                   std::size_t first, std::size_t count) = 0;
    virtual void copyToHost2D(T* host, std::size_t hostPitch, std::size_t hostSlice,
                              const T* device, std::size_t devicePitch, std::size_t deviceSlice,
                              Extent extent, unsigned depth) = 0;
    virtual std::size_t pitch() const = 0;  // elements
    virtual void setPitch(std::size_t elements) = 0;

  protected:
    ~ManagedMemoryAllocatorInterface() = default;
};

// The copies and the pitch, which all allocators share.
template <class T>
class AllocatorBase : public ManagedMemoryAllocatorInterface<T> {
  public:
    void copyFromPackedHost(T* device, const T* host, Extent extent, unsigned depth) override {
        copyFromHost2D(device, pitch(), pitch() * extent.columns, host, extent.rows,
                       std::size_t(extent.rows) * extent.columns, extent, depth);
    }
    void copyFromHostStrided(T* device, const T* host, std::size_t hostLd, Extent extent,
                             std::size_t first, std::size_t count) override {
        checkCudaError(copyElementRun({device, pitch(), first}, {host, hostLd, first}, extent.rows,
                                      count, sizeof(T), cudaMemcpyHostToDevice));
    }
    void copyFromHost2D(T* device, std::size_t devicePitch, std::size_t deviceSlice, const T* host,
                        std::size_t hostPitch, std::size_t hostSlice, Extent extent,
                        unsigned depth) override {
        checkCudaError(copy3D(device, devicePitch * sizeof(T), deviceSlice * sizeof(T), host,
                              hostPitch * sizeof(T), hostSlice * sizeof(T), extent.rows * sizeof(T),
                              extent.columns, depth, cudaMemcpyHostToDevice));
    }
    void copyToPackedHost(T* host, const T* device, Extent extent, unsigned depth) override {
        copyToHost2D(host, extent.rows, std::size_t(extent.rows) * extent.columns, device, pitch(),
                     pitch() * extent.columns, extent, depth);
    }
    void copyToHostStrided(T* host, std::size_t hostLd, const T* device, Extent extent,
                           std::size_t first, std::size_t count) override {
        checkCudaError(copyElementRun({host, hostLd, first}, {device, pitch(), first}, extent.rows,
                                      count, sizeof(T), cudaMemcpyDeviceToHost));
    }
    void copyToHost2D(T* host, std::size_t hostPitch, std::size_t hostSlice, const T* device,
                      std::size_t devicePitch, std::size_t deviceSlice, Extent extent,
                      unsigned depth) override {
        checkCudaError(copy3D(host, hostPitch * sizeof(T), hostSlice * sizeof(T), device,
                              devicePitch * sizeof(T), deviceSlice * sizeof(T),
                              extent.rows * sizeof(T), extent.columns, depth,
                              cudaMemcpyDeviceToHost));
    }
    std::size_t pitch() const override { return pitchBytes_ / sizeof(T); }
    void setPitch(std::size_t elements) override { pitchBytes_ = elements * sizeof(T); }

  protected:
    std::size_t pitchBytes_ = 0;
};

// Packed device memory.
template <class T>
class CudaAllocator : public AllocatorBase<T> {
  public:
    T* allocate(Extent extent, unsigned depth) override {
        void* pointer = nullptr;
        const std::size_t bytes = checkedProduct(extent.rows, extent.columns, depth, sizeof(T));
        allocateOrThrow([&] { return cudaMalloc(&pointer, bytes); });
        this->setPitch(extent.rows);
        return static_cast<T*>(pointer);
    }
    // A failure tells of an earlier error or of none that anybody could mend: nothing is left
    // behind for the next check to blame on its caller.
    void free(T* pointer) override {
        if (cudaFree(pointer) != cudaSuccess) cudaGetLastError();
    }
};

// Device memory with the pitch that the runtime chooses.
template <class T>
class CudaPitchAllocator : public CudaAllocator<T> {
  public:
    T* allocate(Extent extent, unsigned depth) override {
        void* pointer = nullptr;
        const std::size_t width = checkedProduct(extent.rows, sizeof(T));
        const std::size_t height = checkedProduct(extent.columns, depth);
        allocateOrThrow(
            [&] { return cudaMallocPitch(&pointer, &this->pitchBytes_, width, height); });
        return static_cast<T*>(pointer);
    }
};

// Page-locked host memory, packed.
template <class T>
class PageLockedAllocator : public AllocatorBase<T> {
  public:
    T* allocate(Extent extent, unsigned depth) override {
        void* pointer = nullptr;
        const std::size_t bytes = checkedProduct(extent.rows, extent.columns, depth, sizeof(T));
        allocateOrThrow([&] { return cudaMallocHost(&pointer, bytes); });
        this->setPitch(extent.rows);
        return static_cast<T*>(pointer);
    }
    void free(T* pointer) override {
        if (cudaFreeHost(pointer) != cudaSuccess) cudaGetLastError();
    }
};

}  // namespace cudalib
