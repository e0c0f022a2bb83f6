#include "cudalib/maps.h"

#include <cstdint>
#include <cstdlib>

#include "common/state.h"
#include "cudalib/exceptions.h"

namespace cudalib {
namespace {

// ceilDiv for products that pass 32 bits.
std::int64_t ceilDiv64(std::int64_t a, std::int64_t b) {
    return a / b + (a % b > 0);
}

// Halves a number of blocks until the device takes them.
std::int64_t halvedTo(std::int64_t blocks, unsigned limit) {
    while (blocks > limit) blocks >>= 1;
    return blocks;
}

}  // namespace

int ceilDiv(int a, int b) {
    const std::div_t d = std::div(a, b);
    return d.quot + (d.rem > 0 ? 1 : 0);
}

GridLimits gridLimits() {
    if (lumo::deviceIsModern()) return {2147483647, 65535, 65535};  // from capability 3.0 on
    int device = 0;
    checkCudaError(cudaGetDevice(&device));
    cudaDeviceProp properties;
    checkCudaError(cudaGetDeviceProperties(&properties, device));
    return {unsigned(properties.maxGridSize[0]), unsigned(properties.maxGridSize[1]),
            unsigned(properties.maxGridSize[2])};
}

dim3 grid1D(int n, dim3 block) {
    const GridLimits limits = gridLimits();
    const std::int64_t gx = halvedTo(ceilDiv64(n, block.x), limits.x);
    const std::int64_t gy = halvedTo(ceilDiv64(n, block.x * gx), limits.x);
    const std::int64_t gz = ceilDiv64(n, gx * gy * block.x);
    return {unsigned(gx), unsigned(gy), unsigned(gz)};
}

dim3 Map1D::blockShape() const {
    if (blockSize != 0) return {unsigned(blockSize), 1, 1};
    switch (sizingHint) {
        case 2:
            return {64, 1, 1};
        case 3:
            return {16, 1, 1};
        default:
            return {256, 1, 1};
    }
}

dim3 Map2D::blockShape() const {
    if (blockX != 0) return {unsigned(blockX), unsigned(blockY), 1};
    return {16, 16, 1};
}

dim3 Map2D::gridShape() const {
    const dim3 block = blockShape();
    return {unsigned(ceilDiv(rows, int(block.x))), unsigned(ceilDiv(cols, int(block.y))), 1};
}

}  // namespace cudalib
