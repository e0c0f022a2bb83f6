// The shape of a launch, as its lanes know it.
#pragma once

#include <cstdint>

namespace emulated {

struct Shape {
    uint32_t ntid[3] = {1, 1, 1}, nctaid[3] = {1, 1, 1}, cluster[3] = {1, 1, 1};
    uint64_t gridWorkspace = 0;  // of a cooperative launch, for the barrier of the grid

    uint32_t lanes() const { return ntid[0] * ntid[1] * ntid[2]; }
    uint64_t blocks() const { return uint64_t(nctaid[0]) * nctaid[1] * nctaid[2]; }
    uint32_t blocksInCluster() const { return cluster[0] * cluster[1] * cluster[2]; }
    uint32_t rankOf(const uint32_t (&block)[3]) const {
        return block[0] % cluster[0] +
               cluster[0] * (block[1] % cluster[1] + cluster[1] * (block[2] % cluster[2]));
    }
};

}  // namespace emulated
