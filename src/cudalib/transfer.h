// Copies of matrices between host and device, each by the cheapest CUDA call for its geometry.
// Pitches, widths and slices are in bytes. Errors are returned, the first one wins.
#pragma once

#include <cstddef>

#include "platform/cuda3.h"

namespace cudalib {

enum class CopyMode { synchronous, asynchronous };

// `height` rows of `width` bytes: one flat copy if both sides are packed, one 2-D copy if the
// runtime takes the pitches, row by row otherwise.
cudaError_t copy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                   std::size_t width, std::size_t height, cudaMemcpyKind kind,
                   CopyMode mode = CopyMode::synchronous, cudaStream_t stream = nullptr);

// `depth` such slices, each side advancing by its slice size: one flat copy if all is packed.
cudaError_t copy3D(void* to, std::size_t toPitch, std::size_t toSlice, const void* from,
                   std::size_t fromPitch, std::size_t fromSlice, std::size_t width,
                   std::size_t height, std::size_t depth, cudaMemcpyKind kind);

// One side of a copy of consecutive elements: a column-major matrix of any pitch (in elements)
// and the element, in column-major order, where the run starts.
template <class Byte>
struct RunEnd {
    Byte* pointer;
    std::size_t pitch;
    std::size_t first;
};

// `count` consecutive elements of `elementSize` bytes of a matrix with `rows` logical rows.
// Element i lies at pitch * (i / rows) + i mod rows. At most three copies if both runs start at
// the same row; otherwise one for each piece that is contiguous on both sides.
cudaError_t copyElementRun(RunEnd<void> to, RunEnd<const void> from, std::size_t rows,
                           std::size_t count, std::size_t elementSize, cudaMemcpyKind kind);

}  // namespace cudalib
