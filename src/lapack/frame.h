// What the LAPACK exports share beyond the frames of all exports.
#pragma once

#include <cstring>
#include <vector>

#include "blas/frame.h"

namespace lumo {

// The status of a host call whose device call ended with `status`: a device call that succeeded
// is followed by one more check. Its operands are then still alive, to be downloaded whatever
// the outcome, so a failure must not be thrown past them.
inline lumoStatus settled(lumoStatus status) {
    return status == lumoNoError ? guarded(cudalib::synchronizeAndCheck) : status;
}

// Whether a host call is the CPU library's, on the caller's memory: where the device is the CPU,
// and a problem so small that its way through the device would cost more than the problem.
inline bool isSmall(std::ptrdiff_t order, int limit) {
    return order <= limit && platform::sharesMemory() && !hooksAreSet();
}

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
