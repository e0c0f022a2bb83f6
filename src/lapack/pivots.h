// Where the pivots of a factorisation go.
#pragma once

#include <cstring>
#include <vector>

#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"

namespace lumo {

// The pivots of a factorisation while the CPU works with them; a caller of the device interface
// may want them in device or in host memory.
class Pivots {
  public:
    explicit Pivots(int count) : values_(std::size_t(count)) {}
    int* data() { return values_.data(); }

    void deliver(int* ipiv) const {
        const std::size_t bytes = values_.size() * sizeof(int);
        if (bytes == 0) return;
        if (platform::isDevicePointer(ipiv))
            cudalib::checkCudaError(
                cudaMemcpy(ipiv, values_.data(), bytes, cudaMemcpyHostToDevice));
        else
            std::memcpy(ipiv, values_.data(), bytes);
    }

  private:
    std::vector<int> values_;
};

}  // namespace lumo
