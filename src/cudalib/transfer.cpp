#include "cudalib/transfer.h"

#include <algorithm>

namespace cudalib {
namespace {

constexpr std::size_t largestPitch = 2147483647;

char* offset(void* p, std::size_t bytes) {
    return static_cast<char*>(p) + bytes;
}
const char* offset(const void* p, std::size_t bytes) {
    return static_cast<const char*>(p) + bytes;
}

// Runs copies until one fails; later ones are skipped and its error is kept.
struct MemcpyStatus {
    cudaMemcpyKind kind;
    cudaError_t error = cudaSuccess;

    template <class Copy>
    void then(Copy copy) {
        if (error == cudaSuccess) error = copy();
    }
};

cudaError_t flat(void* to, const void* from, std::size_t bytes, cudaMemcpyKind kind, CopyMode mode,
                 cudaStream_t stream) {
    return mode == CopyMode::asynchronous ? cudaMemcpyAsync(to, from, bytes, kind, stream)
                                          : cudaMemcpy(to, from, bytes, kind);
}

}  // namespace

cudaError_t copy2D(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
                   std::size_t width, std::size_t height, cudaMemcpyKind kind, CopyMode mode,
                   cudaStream_t stream) {
    if (fromPitch == width && toPitch == fromPitch)
        return flat(to, from, toPitch * height, kind, mode, stream);
    if (toPitch < largestPitch && fromPitch < largestPitch)
        return mode == CopyMode::asynchronous
                   ? cudaMemcpy2DAsync(to, toPitch, from, fromPitch, width, height, kind, stream)
                   : cudaMemcpy2D(to, toPitch, from, fromPitch, width, height, kind);
    MemcpyStatus status{kind};
    for (std::size_t row = 0; row < height; ++row)
        status.then([&] {
            return flat(offset(to, row * toPitch), offset(from, row * fromPitch), width, kind, mode,
                        stream);
        });
    return status.error;
}

cudaError_t copy3D(void* to, std::size_t toPitch, std::size_t toSlice, const void* from,
                   std::size_t fromPitch, std::size_t fromSlice, std::size_t width,
                   std::size_t height, std::size_t depth, cudaMemcpyKind kind) {
    const bool packed = fromPitch == width && toPitch == fromPitch && toSlice == fromSlice &&
                        toSlice == toPitch * height;
    if (packed) return cudaMemcpy(to, from, toSlice * depth, kind);
    MemcpyStatus status{kind};
    for (std::size_t slice = 0; slice < depth; ++slice)
        status.then([&] {
            return copy2D(offset(to, slice * toSlice), toPitch, offset(from, slice * fromSlice),
                          fromPitch, width, height, kind);
        });
    return status.error;
}

cudaError_t copyElementRun(RunEnd<void> to, RunEnd<const void> from, std::size_t rows,
                           std::size_t count, std::size_t elementSize, cudaMemcpyKind kind) {
    if (rows == 0 || count == 0) return cudaSuccess;
    auto toAt = [&](std::size_t i) {
        i += to.first;
        return offset(to.pointer, (to.pitch * (i / rows) + i % rows) * elementSize);
    };
    auto fromAt = [&](std::size_t i) {
        i += from.first;
        return offset(from.pointer, (from.pitch * (i / rows) + i % rows) * elementSize);
    };
    MemcpyStatus status{kind};
    auto piece = [&](std::size_t first, std::size_t length) {
        if (length == 0) return;
        status.then(
            [&] { return cudaMemcpy(toAt(first), fromAt(first), length * elementSize, kind); });
    };

    if (to.first % rows != from.first % rows) {
        for (std::size_t done = 0; done < count;) {
            const std::size_t length = std::min(
                {count - done, rows - (to.first + done) % rows, rows - (from.first + done) % rows});
            piece(done, length);
            done += length;
        }
        return status.error;
    }

    std::size_t head = std::min(count, rows - to.first % rows);
    if (head == rows) head = 0;  // the run starts with a whole column
    const std::size_t columns = (count - head) / rows;
    piece(0, head);
    if (columns > 0)
        status.then([&] {
            return copy2D(toAt(head), to.pitch * elementSize, fromAt(head),
                          from.pitch * elementSize, rows * elementSize, columns, kind);
        });
    piece(head + columns * rows, (count - head) % rows);
    return status.error;
}

}  // namespace cudalib
