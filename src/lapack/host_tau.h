// The scalar factors of reflectors while the CPU works with them.
#pragma once

#include <vector>

#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"

namespace lumo {

// A host copy of `count` factors in device memory, which is copied to the device again when it goes
// out of scope, however the routine ends: the factors that are there are right. A failure of that
// shows at the caller's next check.
template <class T>
class HostTau {
  public:
    HostTau(T* device, int count) : device_(device), values_(std::size_t(count)) {
        cudalib::checkCudaError(
            cudaMemcpy(values_.data(), device_, bytes(), cudaMemcpyDeviceToHost));
    }
    ~HostTau() { cudaMemcpy(device_, values_.data(), bytes(), cudaMemcpyHostToDevice); }
    HostTau(const HostTau&) = delete;
    HostTau& operator=(const HostTau&) = delete;

    T* data() { return values_.data(); }

  private:
    std::size_t bytes() const { return values_.size() * sizeof(T); }

    T* device_;
    std::vector<T> values_;
};

}  // namespace lumo
