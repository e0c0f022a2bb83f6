// Launches: from a launcher (Unit.cpp) to its kernel, which it declares and Unit.cu defines.
#pragma once

#include <algorithm>
#include <cstddef>

#include "common/element_types.h"
#include "cudalib/maps.h"
#include "cudalib/streams.h"
#include "platform/registry.h"

namespace cudalib {

// Pushes one argument at the next multiple of its alignment.
template <class T>
bool push(const T& argument, std::size_t& offset) {
    constexpr std::size_t size = sizeof(T);  // NOLINT(bugprone-sizeof-expression): of the pointer
    offset = (offset + alignof(T) - 1) / alignof(T) * alignof(T);
    if (cudaSetupArgument(&argument, size, offset) != cudaSuccess) return false;
    offset += size;
    return true;
}

template <class... Parameters>
const platform::Kernel* registered(void (*kernel)(Parameters...)) {
    return platform::findKernel(reinterpret_cast<const void*>(kernel));
}

// Launches a kernel as the last cudaConfigureCall has it. A failed push or launch shows at the
// caller's next check.
template <bool cooperative = false, class... Parameters, class... Arguments>
void launchConfigured(void (*kernel)(Parameters...), Arguments... arguments) {
    std::size_t offset = 0;
    if ((push(Parameters(arguments), offset) && ...))
        platform::launch(registered(kernel), cooperative);
}

// Launches a kernel on the thread's current stream. If the configuration fails, nothing is
// launched; its error is returned for those who want to know.
template <bool cooperative = false, class Map, class Kernel, class... Arguments>
cudaError_t launch(const Map& map, Kernel* kernel, Arguments... arguments) {
    const dim3 block = map.blockShape();
    const dim3 grid = map.gridShape();
    const cudaError_t error = cudaConfigureCall(grid, block, 0, currentStream);
    if (error == cudaSuccess) launchConfigured<cooperative>(kernel, arguments...);
    return error;
}

// The same for a kernel whose blocks wait for each other (grid.h): they all run at the same time.
template <class Map, class Kernel, class... Arguments>
cudaError_t launchCooperative(const Map& map, Kernel* kernel, Arguments... arguments) {
    return launch<true>(map, kernel, arguments...);
}

// The most blocks of so many lanes that such a launch may have, 0 where there is none.
template <class Kernel>
int cooperativeBlocks(Kernel* kernel, int lanes) {
    return platform::cooperativeBlocks(registered(kernel), lanes);
}

// A part of a matrix whose 2-D grid every device takes.
struct Slab {
    std::size_t i, j;  // its first element's place
    int rows, columns;

    // Its place in a matrix or, `transposed`, in the transpose of one.
    template <class T>
    T* of(T* a, std::size_t ld, bool transposed = false) const {
        return transposed ? a + i * ld + j : a + j * ld + i;
    }
    // What belongs to triangle `uplo` here: 'A' for all of it, 0 for nothing. The first slab holds
    // the whole diagonal, since no memory holds a matrix of a million rows and a million columns;
    // the others lie below it or above it.
    char part(char uplo) const {
        const bool below = i > 0, above = j > 0;
        if (!below && !above) return uplo;
        return uplo == (below ? 'U' : 'L') ? '\0' : 'A';
    }
};

// Cuts an m x n matrix into slabs for f(slab), which launches and returns its configuration's
// error; stops at the first and returns it. Nearly always there is one slab. An empty matrix has
// none, since no grid is empty.
template <class F>
cudaError_t forEachSlab(long m, long n, F f) {
    constexpr long most = 65535L * 16;  // the least limit of a grid, times a side of a block
    for (long j = 0; j < n; j += most)
        for (long i = 0; i < m; i += most) {
            const Slab slab{std::size_t(i), std::size_t(j), int(std::min(most, m - i)),
                            int(std::min(most, n - j))};
            if (const cudaError_t error = f(slab)) return error;
        }
    return cudaSuccess;
}

}  // namespace cudalib
