// Plane rotations on their way from the host to the device.
#pragma once

#include "cudalib/managed_memory.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// The host writes a sweep's rotations into page-locked memory and sends them in one asynchronous
// copy, without waiting for the sweeps before. Copies and the kernels that read the rotations go
// to the default stream, one after another, so that the device needs room for one sweep only. The
// host's memory is taken in turn, and waited for when it starts anew.
template <class Real>
class RotationRing {
  public:
    // For up to `largest` numbers a sweep; 0 takes no memory.
    explicit RotationRing(std::size_t largest)
        : capacity_(largest * sweepsAhead),
          host_({unsigned(largest), sweepsAhead}),
          device_(largest) {}
    // A copy under way would read freed memory. What fails here shows at the caller's next check.
    ~RotationRing() {
        if (capacity_) cudaStreamSynchronize(nullptr);
    }
    RotationRing(const RotationRing&) = delete;
    RotationRing& operator=(const RotationRing&) = delete;

    // Where the host writes the next `count` numbers.
    Real* next(std::size_t count) {
        if (used_ + count > capacity_) {
            cudalib::checkCudaError(cudaStreamSynchronize(nullptr));
            used_ = 0;
        }
        Real* const numbers = host_.data() + used_;
        used_ += count;
        return numbers;
    }
    // Sends numbers that next() gave. Kernels launched before the next send() may read them.
    const Real* send(const Real* numbers, std::size_t count) {
        cudalib::checkCudaError(cudaMemcpyAsync(device_.data(), numbers, count * sizeof(Real),
                                                cudaMemcpyHostToDevice, nullptr));
        return device_.data();
    }

  private:
    static constexpr unsigned sweepsAhead = 16;  // of the largest ones

    const std::size_t capacity_;
    std::size_t used_ = 0;
    cudalib::ManagedMemory<Real, cudalib::PageLockedAllocator> host_;
    cudalib::Workspace<Real> device_;
};

}  // namespace lumo
