// lumoDeviceMalloc, lumoDeviceFree, lumoDeviceSetMatrix, lumoDeviceGetMatrix.
#include <algorithm>

#include "cudalib/allocators.h"
#include "cudalib/transfer.h"
#include "lumo_memory.h"
#include "runtime/frame.h"

namespace {

struct MatrixCopy {
    int rows, columns;
    std::size_t elementSize;
    void* to;
    int ldto;
    const void* from;
    int ldfrom;
};

// The positions are the same for both directions: source, its leading dimension, destination.
lumoStatus copyMatrix(const MatrixCopy& c, cudaMemcpyKind kind) {
    return lumo::initializedFrame([&] {
        if (c.rows < 0) lumo::throwArgumentError(-1);
        if (c.columns < 0) lumo::throwArgumentError(-2);
        if (c.elementSize == 0) lumo::throwArgumentError(-3);
        if (c.ldfrom < std::max(1, c.rows)) lumo::throwArgumentError(-5);
        if (c.ldto < std::max(1, c.rows)) lumo::throwArgumentError(-7);
        if (c.rows == 0 || c.columns == 0) return;
        if (!c.from) lumo::throwArgumentError(-4);
        if (!c.to) lumo::throwArgumentError(-6);
        std::size_t whole;
        if (!cudalib::multiply(whole, std::max(c.ldfrom, c.ldto), c.columns, c.elementSize))
            lumo::throwArgumentError(-3);
        auto bytes = [&](int elements) { return std::size_t(elements) * c.elementSize; };
        cudalib::checkCudaError(cudalib::copy2D(c.to, bytes(c.ldto), c.from, bytes(c.ldfrom),
                                                bytes(c.rows), std::size_t(c.columns), kind));
    });
}

}  // namespace

lumoStatus lumoDeviceMalloc(void** pointer, size_t bytes) {
    void* block = nullptr;
    const lumoStatus status = lumo::initializedFrame([&] {
        if (!pointer) lumo::throwArgumentError(-1);
        cudalib::allocateOrThrow([&] { return cudaMalloc(&block, bytes); });
    });
    // The check that follows may find a failure of something earlier.
    if (status != lumoNoError && block) {
        if (cudaFree(block) != cudaSuccess) cudaGetLastError();
        block = nullptr;
    }
    if (pointer) *pointer = block;
    return status;
}

lumoStatus lumoDeviceFree(void* pointer) {
    return lumo::queryFrame([&] { cudalib::checkCudaError(cudaFree(pointer)); });
}

lumoStatus lumoDeviceSetMatrix(int rows, int columns, size_t elementSize, const void* host,
                               int ldhost, void* device, int lddevice) {
    return copyMatrix({rows, columns, elementSize, device, lddevice, host, ldhost},
                      cudaMemcpyHostToDevice);
}

lumoStatus lumoDeviceGetMatrix(int rows, int columns, size_t elementSize, const void* device,
                               int lddevice, void* host, int ldhost) {
    return copyMatrix({rows, columns, elementSize, host, ldhost, device, lddevice},
                      cudaMemcpyDeviceToHost);
}
