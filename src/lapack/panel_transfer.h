// A panel in page-locked host memory and the stream that carries it to and from the device while
// the device works on the rest.
#pragma once

#include "cudalib/managed_memory.h"
#include "cudalib/streams.h"
#include "cudalib/transfer.h"

namespace lumo {

// One column-major panel of up to rows x columns elements. Transfers are asynchronous: wait()
// before the CPU touches the panel and before the device uses what was uploaded. Without `overlap`
// there is no stream, and they are plain copies. Where the device's memory is the host's, the panel
// is the matrix's own part, and nothing is transferred: wait() is for what was issued before.
template <class T>
class PanelTransfer {
  public:
    PanelTransfer(unsigned rows, unsigned columns, bool overlap = true)
        : shared_(platform::sharesMemory()) {
        if (!shared_) panel_ = Memory({rows, columns});
        if (overlap || shared_) cudalib::checkCudaError(cudaStreamCreate(&stream_));
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

    bool shared() const { return shared_; }
    // Of the panel that was downloaded last. Not shared, its leading dimension is its rows.
    T* host() const { return shared_ ? part_ : panel_.data(); }
    int ld() const { return ld_; }

    void startDownload(T* device, int ld, int rows, int columns) {
        part_ = device;
        ld_ = shared_ ? ld : rows;
        if (shared_)
            cudalib::checkCudaError(
                cudaMemcpyAsync(part_, device, 0, cudaMemcpyDeviceToHost, stream_));
        else
            cudalib::checkCudaError(cudalib::copy2D(host(), bytes(rows), device, bytes(ld),
                                                    bytes(rows), std::size_t(columns),
                                                    cudaMemcpyDeviceToHost, mode(), stream_));
    }
    void startUpload(T* device, int ld, int rows, int columns) {
        if (shared_) return;
        cudalib::checkCudaError(cudalib::copy2D(device, bytes(ld), host(), bytes(rows), bytes(rows),
                                                std::size_t(columns), cudaMemcpyHostToDevice,
                                                mode(), stream_));
    }
    cudaStream_t stream() const { return stream_; }
    void wait() { cudalib::checkCudaError(cudaStreamSynchronize(stream_)); }

  private:
    using Memory = cudalib::ManagedMemory<T, cudalib::PageLockedAllocator>;

    cudalib::CopyMode mode() const {
        return stream_ ? cudalib::CopyMode::asynchronous : cudalib::CopyMode::synchronous;
    }
    static std::size_t bytes(int elements) { return std::size_t(elements) * sizeof(T); }

    const bool shared_;
    Memory panel_;
    T* part_ = nullptr;
    int ld_ = 0;
    cudaStream_t stream_ = nullptr;
};

// A stream of the device's own beside a panel's, so that the panel travels while the device works.
// Each waits for the other where told to; the host waits for neither.
class StreamBesidePanel {
  public:
    explicit StreamBesidePanel(cudaStream_t panel) : panel_(panel) { panelWaits(); }
    // What the panel's stream is given from now on finds all done that this one has been given.
    void panelWaits() const { handOver_.order(device_, panel_); }
    void waitForPanel() const { handOver_.order(panel_, device_); }

  private:
    cudaStream_t panel_;
    cudalib::Event handOver_;
    cudalib::OwnStream device_;
};

}  // namespace lumo
