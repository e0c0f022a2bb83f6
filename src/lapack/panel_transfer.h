// A panel in page-locked host memory and the stream that carries it to and from the device while
// the device works on the rest.
#pragma once

#include "cudalib/managed_memory.h"
#include "cudalib/transfer.h"

namespace lumo {

// One column-major panel of up to rows x columns elements. Transfers are asynchronous: wait()
// before the CPU touches the panel and before the device uses what was uploaded. Without `overlap`
// there is no stream, and they are plain copies.
template <class T>
class PanelTransfer {
  public:
    PanelTransfer(unsigned rows, unsigned columns, bool overlap = true) : panel_({rows, columns}) {
        if (overlap) cudalib::checkCudaError(cudaStreamCreate(&stream_));
    }
    // Waits before it gives the panel back: a transfer under way would use freed memory. What
    // fails here shows at the caller's next check.
    ~PanelTransfer() {
        if (!stream_) return;
        cudaStreamSynchronize(stream_);
        cudaStreamDestroy(stream_);
    }
    PanelTransfer(const PanelTransfer&) = delete;
    PanelTransfer& operator=(const PanelTransfer&) = delete;

    T* host() const { return panel_.data(); }

    // The host's leading dimension is `rows`.
    void startDownload(const T* device, int ld, int rows, int columns) {
        cudalib::checkCudaError(cudalib::copy2D(host(), bytes(rows), device, bytes(ld), bytes(rows),
                                                std::size_t(columns), cudaMemcpyDeviceToHost,
                                                mode(), stream_));
    }
    void startUpload(T* device, int ld, int rows, int columns) {
        cudalib::checkCudaError(cudalib::copy2D(device, bytes(ld), host(), bytes(rows), bytes(rows),
                                                std::size_t(columns), cudaMemcpyHostToDevice,
                                                mode(), stream_));
    }
    void wait() { cudalib::checkCudaError(cudaStreamSynchronize(stream_)); }

  private:
    cudalib::CopyMode mode() const {
        return stream_ ? cudalib::CopyMode::asynchronous : cudalib::CopyMode::synchronous;
    }
    static std::size_t bytes(int elements) { return std::size_t(elements) * sizeof(T); }

    cudalib::ManagedMemory<T, cudalib::PageLockedAllocator> panel_;
    cudaStream_t stream_ = nullptr;
};

}  // namespace lumo
