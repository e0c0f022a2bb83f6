// What the host prepares of a level of divide and conquer, and how it gets to the device.
#pragma once

#include <vector>

#include "cudalib/exceptions.h"
#include "cudalib/workspace_pool.h"
#include "lapack/stedc_deflation.h"
#include "platform/cuda3.h"

namespace lumo {

// A copy in device memory.
template <class V>
void upload(V* device, const std::vector<V>& host) {
    if (!host.empty())
        cudalib::checkCudaError(
            cudaMemcpy(device, host.data(), host.size() * sizeof(V), cudaMemcpyHostToDevice));
}

// A list in device memory.
template <class V>
class DeviceList {
  public:
    explicit DeviceList(const std::vector<V>& host) : values_(host.size()) {
        upload(values_.data(), host);
    }
    const V* data() const { return values_.data(); }

  private:
    cudalib::Workspace<V> values_;
};

// What a level's merges come to, as the host knows it before their roots are found.
template <class R>
struct Level {
    // What belongs to one of `merges`.
    struct Products {
        int upper, fromUpper, both, fromLower;  // rows, and columns by their rows
    };

    std::vector<Merge<R>> merges;  // but for those of which all has been deflated
    std::vector<Products> products;
    std::vector<ColumnRotation<R>> rotations;
    std::vector<ColumnMove> gathered, putBack;
    std::vector<R> numbers;  // the kept ones' d and, behind all of them, z
    std::vector<int> rows;
    int order = 0;  // the largest merge's
};

}  // namespace lumo
