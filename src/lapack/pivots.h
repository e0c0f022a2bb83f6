// Where the pivots of a factorisation go, and come from.
#pragma once

#include <algorithm>
#include <vector>

#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"

namespace lumo {

// Integers that the CPU has made, to wherever the caller of the device interface wants them.
inline void deliver(const std::vector<int>& values, int* to) {
    if (values.empty()) return;
    if (platform::isDevicePointer(to))
        cudalib::checkCudaError(
            cudaMemcpy(to, values.data(), values.size() * sizeof(int), cudaMemcpyHostToDevice));
    else
        std::copy(values.begin(), values.end(), to);
}

// The pivots of a factorisation while the CPU works with them; a caller of the device interface
// may want them in device or in host memory.
class Pivots {
  public:
    explicit Pivots(int count) : values_(std::size_t(count)) {}
    Pivots(int count, const int* ipiv) : Pivots(count) {
        if (platform::isDevicePointer(ipiv))
            cudalib::checkCudaError(
                cudaMemcpy(values_.data(), ipiv, bytes(), cudaMemcpyDeviceToHost));
        else
            std::copy_n(ipiv, count, values_.data());
    }
    int* data() { return values_.data(); }

    void deliver(int* ipiv) const { lumo::deliver(values_, ipiv); }

    // Whether each names a row of a square matrix.
    bool areRows() const {
        return std::all_of(values_.begin(), values_.end(),
                           [this](int row) { return row >= 1 && row <= int(values_.size()); });
    }

  private:
    std::size_t bytes() const { return values_.size() * sizeof(int); }

    std::vector<int> values_;
};

}  // namespace lumo
