// The seam between the library and whatever executes it.
//
// A platform is one table of functions: the CUDA 3 runtime and the legacy CUBLAS interface, in
// plain types. No type here carries a name of the CUDA toolkit's, so a plugin can include this
// header next to the toolkit's own. Error codes are CUDA 3 and legacy CUBLAS numbers as int.
#pragma once

#include <cstddef>

#include "platform/element_types.h"

namespace platform {

constexpr unsigned tableVersion = 8;

struct Dim3 {
    unsigned x, y, z;
    constexpr Dim3(unsigned x_ = 1, unsigned y_ = 1, unsigned z_ = 1) : x(x_), y(y_), z(z_) {}
};

// The CUDA 3 device properties, field by field.
struct DeviceProperties {
    char name[256];
    std::size_t totalGlobalMem;
    std::size_t sharedMemPerBlock;
    int regsPerBlock;
    int warpSize;
    std::size_t memPitch;
    int maxThreadsPerBlock;
    int maxThreadsDim[3];
    int maxGridSize[3];
    int clockRate;  // kilohertz
    std::size_t totalConstMem;
    int major;
    int minor;
    std::size_t textureAlignment;
    int deviceOverlap;
    int multiProcessorCount;
    int kernelExecTimeoutEnabled;
    int integrated;
    int canMapHostMemory;
    int computeMode;
};

// One launch as the executing CPU sees it.
struct Launch {
    const unsigned char* arguments;  // the block that cudaSetupArgument filled
    Dim3 grid;
    Dim3 block;
    // Where a kernel reaches the memory behind a device pointer. Null if nothing is there.
    void* (*address)(void* devicePointer);
    // Runs item(context, k) for every k below count, on as many threads as are worth waking for
    // `work` elementary operations.
    void (*parallel)(std::size_t count, std::size_t work, void (*item)(const void*, std::size_t),
                     const void* context);
    int threads;  // that there are
};

// What a launch asks of a device, for a platform that only keeps time.
struct Work {
    double bytes = 0;     // to and from memory
    double flops = 0;     // of single precision: one of double is two
    double turns = 0;     // reads of memory, or barriers, of which each waits for the one before
    double meetings = 0;  // how often all blocks wait for each other
    double reach = 0;     // bytes of the matrix that it works on a part of, if that is more
    // What a host may read of the results: in `norm`, a real of `size` bytes, the norm of so many
    // normal random numbers, or what is found at `normFrom`; in `pivots`, from 1, those of a panel
    // of a random matrix that begins in row `first`, from 0.
    void* norm = nullptr;
    double normOf = 0;
    const void* normFrom = nullptr;
    unsigned size = 0;
    int* pivots = nullptr;
    int first = 0, rows = 0, columns = 0;
};

// A kernel instance: the name it is registered under and, for a CPU, its body and what a launch
// with these arguments asks of a device. `run` returns false, having done nothing, if a pointer
// argument leads nowhere.
struct Kernel {
    const char* name;
    bool (*run)(const Launch&);
    Work (*work)(const unsigned char* arguments);
    // What a platform that knows kernels by their names has found of this one, once it has.
    mutable const void* found = nullptr;
};

// What the library registers as a unit's "fat binary".
struct FatBinary {
    const Kernel* kernels;
    std::size_t count;
};

using Stream = void*;
using Event = void*;

// What the algorithms work in panels for: to factorise an m x n matrix, or to apply reflectors of
// order m to n rows or columns.
enum class Panel { lu, qr, bidiagonal, reflectors, cholesky };

// The parts of a table; platform/entries.inc has the entries.
struct Identity {
    unsigned version;  // tableVersion of the header it was compiled with
    const char* name;  // "software", "cuda"
};

struct Runtime {
#define ENTRY(kind, result, name, parameters) result(*name) parameters;
#include "platform/entries.inc"
};

template <class T>
struct Blas {
    using Element = T;
    using Real = RealOf<T>;
#define BLAS_ENTRY(name, S, D, C, Z, parameters) void(*name) parameters;
#include "platform/entries.inc"
};

struct Table : Identity,
               Runtime,
               Blas<float>,
               Blas<double>,
               Blas<std::complex<float>>,
               Blas<std::complex<double>> {
#define OPTIONAL_ENTRY(kind, result, name, parameters) result(*name) parameters;
#include "platform/entries.inc"
};

// f(the entries of an element type), for all four.
template <class F>
void eachBlas(Table& table, F f) {
    f(static_cast<Blas<float>&>(table));
    f(static_cast<Blas<double>&>(table));
    f(static_cast<Blas<std::complex<float>>&>(table));
    f(static_cast<Blas<std::complex<double>>&>(table));
}

// The one symbol a plugin exports, as "lumoPlatformTable". Returns null if it was built for
// another table version.
using TableFunction = const Table* (*)(unsigned version);

}  // namespace platform
