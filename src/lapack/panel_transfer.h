// A panel in page-locked host memory and the stream that carries it to and from the device while
// the device works on the rest.
#pragma once

#include "cudalib/managed_memory.h"
#include "cudalib/transfer.h"

namespace lumo {

// One column-major panel of up to `elements` elements. Transfers are asynchronous: wait() before
// the CPU touches the panel and before the device uses what was uploaded.
template <class T>
class PanelTransfer {
  public:
    PanelTransfer(unsigned rows, unsigned columns) : panel_({rows, columns}) {
        cudalib::checkCudaError(cudaStreamCreate(&stream_));
    }
    // Waits before it gives the panel back: a transfer under way would use freed memory. What
    // fails here shows at the caller's next check.
    ~PanelTransfer() {
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
                                                cudalib::CopyMode::asynchronous, stream_));
    }
    void startUpload(T* device, int ld, int rows, int columns) {
        cudalib::checkCudaError(cudalib::copy2D(device, bytes(ld), host(), bytes(rows), bytes(rows),
                                                std::size_t(columns), cudaMemcpyHostToDevice,
                                                cudalib::CopyMode::asynchronous, stream_));
    }
    void wait() { cudalib::checkCudaError(cudaStreamSynchronize(stream_)); }

  private:
    static std::size_t bytes(int elements) { return std::size_t(elements) * sizeof(T); }

    cudalib::ManagedMemory<T, cudalib::PageLockedAllocator> panel_;
    cudaStream_t stream_ = nullptr;
};

}  // namespace lumo
