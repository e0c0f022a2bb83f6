// A user's host matrix and its copy on the device, for the length of one call.
#pragma once

#include <cstdint>
#include <exception>
#include <optional>

#include "cudalib/managed_memory.h"
#include "routine/blas_allocator.h"

namespace lumo {

// Whether an address is one for an element: a caller's complex numbers may be aligned as reals are.
template <class T>
bool isAligned(const T* pointer) {
    return reinterpret_cast<std::uintptr_t>(pointer) % alignof(T) == 0;
}

enum Residence { anywhere, pitched };
enum TransferMode { noTransfer = 0, upload = 2, download = 4, uploadAndDownload = 6 };

// Uploads on construction and downloads on destruction, as its mode says. Nothing is downloaded
// while an exception that began after its construction unwinds: the operation that would have
// filled the device copy has not run. A failed download is swallowed and leaves no error behind.
//
// A vector with an increment is a row whose leading dimension is the increment's magnitude, packed
// on the device by the CudaAllocator: the pitch of a matrix would spread it over the memory.
//
// Where the device's memory is the host's, the matrix is its own copy, if it lies as device memory
// has to: aligned to whole elements; a pitched one only if its leading dimension is good to work
// with.
template <class T, template <class> class Alloc = BlasAllocator>
class HostBoundMatrix {
  public:
    // An empty matrix, or one that is transferred neither way, allocates nothing. Throws if there
    // is nothing at `host`, if the device has no memory or if the upload fails.
    HostBoundMatrix(cudalib::Extent extent, T* host, int hostLd, TransferMode mode,
                    unsigned depth = 1, Residence residence = anywhere)
        : rows_(extent.rows), host_(host), hostLd_(hostLd), mode_(mode) {
        if (!extent.rows || !extent.columns || !depth) mode_ = noTransfer;
        if (mode_ == noTransfer) return;
        if (!host) throw cudalib::CudaRuntimeException(cudaErrorInvalidValue);
        shared_ = platform::sharesMemory() && isAligned(host) &&
                  (residence == anywhere || worksWell(extent));
        if (shared_) return;
        memory_.emplace(extent, depth);
        if (mode_ & upload) memory_->copyFromHost(host_, hostLd_);
    }

    ~HostBoundMatrix() {
        if (shared_) {
            // Nothing works on the caller's memory when the call is over, however it ends.
            if (std::uncaught_exceptions() > exceptions_) cudaThreadSynchronize();
            return;
        }
        if (!(mode_ & download) || std::uncaught_exceptions() > exceptions_) return;
        try {
            memory_->copyToHost(host_, hostLd_);
        } catch (...) {
            cudaGetLastError();
        }
    }

    HostBoundMatrix(const HostBoundMatrix&) = delete;
    HostBoundMatrix& operator=(const HostBoundMatrix&) = delete;

    T* data() const { return shared_ ? host_ : memory_ ? memory_->data() : nullptr; }
    int leadingDimension() const {
        if (shared_) return hostLd_;
        return memory_ ? memory_->leadingDimension() : int(std::max(1u, rows_));
    }
    bool outputOnly() const { return mode_ == download; }
    void cancelDownload() { mode_ = TransferMode(mode_ & ~download); }

  private:
    // Columns that are far apart by a power of two compete for the same places in a cache; what
    // fits into it whole does not mind.
    bool worksWell(cudalib::Extent extent) const {
        constexpr std::size_t spread = 1024, cache = std::size_t(1) << 20;
        const std::size_t pitch = std::size_t(hostLd_) * sizeof(T);
        return pitch % spread != 0 || pitch * extent.columns <= cache;
    }

    std::optional<cudalib::ManagedMemory<T, Alloc>> memory_;  // where there is a copy
    bool shared_ = false;
    unsigned rows_;
    T* host_;
    int hostLd_;
    TransferMode mode_;
    int exceptions_ = std::uncaught_exceptions();
};

}  // namespace lumo
