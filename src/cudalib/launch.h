// Launches: host stubs that push their arguments, and the registration of a device source unit.
//
// A kernel is a function template marked LUMO_KERNEL whose only statement is
//
//     cudalib::kernel<Body>(LUMO_STUB(Kernel<T>), arguments...);
//
// nvcc makes a device function of it that runs the body on its block. g++ makes its host stub,
// which is also the handle under which the kernel is registered; its mangled name, equal under
// both compilers, is the kernel's name. A table that is indexed at run time is passed as
// LUMO_GRID_CONSTANT: else a GPU copies it to every thread's local memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>

#include "cudalib/block.h"

#ifdef __CUDACC__
#define LUMO_KERNEL __global__
#if defined(__CUDA_ARCH__) && __CUDA_ARCH__ >= 700  // earlier devices have to copy
#define LUMO_GRID_CONSTANT __grid_constant__ const
#else
#define LUMO_GRID_CONSTANT const
#endif
#define LUMO_STUB(...) nullptr
#else
#define LUMO_KERNEL
#define LUMO_GRID_CONSTANT const
#define LUMO_STUB(...) reinterpret_cast<const void*>(&__VA_ARGS__)
#endif

namespace cudalib {

// The mangled name of a function as a string, known at compile time.
template <auto* function>
const char* mangledName() {
    const char* name;
#if defined(__x86_64__)
    asm(".pushsection .rodata.lumo_names,\"aMS\",@progbits,1\n"
        "661:\t.asciz \"%c1\"\n"
        "\t.popsection\n"
        "\tlea 661b(%%rip), %0"
        : "=r"(name)
        : "i"(function));
#else
#error "no way is known here to learn a function's mangled name on this architecture"
#endif
    return name;
}

#ifdef __CUDACC__

template <class Body, class... Arguments>
LUMO_DEVICE void kernel(const void* /*stub*/, const Arguments&... arguments) {
    Body::run(Body::Block::current(), arguments...);
}

// What the CUDA plugin knows a kernel by.
struct Instance {
    const char* name;
    const void* stub;
};

template <auto* stub, class Body>
Instance instance() {
    return {mangledName<stub>(), reinterpret_cast<const void*>(stub)};
}

#else

// Pushes one argument at the next multiple of its alignment.
template <class T>
bool push(const T& argument, std::size_t& offset) {
    offset = (offset + alignof(T) - 1) / alignof(T) * alignof(T);
    if (cudaSetupArgument(&argument, sizeof(T), offset) != cudaSuccess) return false;
    offset += sizeof(T);
    return true;
}

// The text of every host stub. A failed push or launch shows at the caller's next check.
template <class Body, class... Arguments>
void kernel(const void* stub, const Arguments&... arguments) {
    std::size_t offset = 0;
    if ((push(arguments, offset) && ...)) cudaLaunch(static_cast<const char*>(stub));
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

// Configures a launch on the default stream and calls the stub. If the configuration fails,
// nothing is launched; its error is returned for those who want to know.
template <class Map, class... Parameters, class... Arguments>
cudaError_t launch(const Map& map, void (*stub)(Parameters...), Arguments... arguments) {
    const dim3 block = map.blockShape();
    const dim3 grid = map.gridShape();
    const cudaError_t error = cudaConfigureCall(grid, block, 0, nullptr);
    if (error == cudaSuccess) stub(Parameters(arguments)...);
    return error;
}

// --- A kernel executed by the CPU ---------------------------------------------------------

// Takes the next argument out of a packed block.
template <class T>
T unpack(const unsigned char* block, std::size_t& offset) {
    offset = (offset + alignof(T) - 1) / alignof(T) * alignof(T);
    T argument;
    std::memcpy(&argument, block + offset, sizeof(T));
    offset += sizeof(T);
    return argument;
}

// Replaces a device pointer by the address where the CPU reaches its memory.
template <class T>
bool translate(const platform::Launch&, T&) {
    return true;
}
template <class T>
bool translate(const platform::Launch& launch, T*& pointer) {
    if (!pointer) return true;
    void* there = launch.address(const_cast<std::remove_const_t<T>*>(pointer));
    pointer = static_cast<T*>(there);
    return there != nullptr;
}

template <class Body, class... Parameters>
struct CpuRun {
    platform::Launch launch;
    std::tuple<Parameters...> arguments;
    using Block = typename Body::Block;

    // One merged block, compiled twice from one text: for baseline x86-64, since that is what a
    // package is built for, and for processors with AVX2 and FMA.
    __attribute__((flatten)) static void item(const void* run, std::size_t k) { text(run, k); }
#if defined(__x86_64__)
    __attribute__((flatten, target("arch=x86-64-v3"))) static void itemV3(const void* run,
                                                                          std::size_t k) {
        text(run, k);
    }
#endif

  private:
    LUMO_DEVICE static void text(const void* context, std::size_t k) {
        const auto& run = *static_cast<const CpuRun*>(context);
        body(run, k, std::index_sequence_for<Parameters...>());
    }
    // Not by std::apply: of a long body the compiler made a function of its own, which both texts
    // called and which was baseline code.
    template <std::size_t... n>
    LUMO_DEVICE static void body(const CpuRun& run, std::size_t k, std::index_sequence<n...>) {
        Body::run(Block::item(run.launch, k), std::get<n>(run.arguments)...);
    }
};

inline bool hasV3() {
#if defined(__x86_64__)
    static const bool yes = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                            __builtin_cpu_supports("bmi2");
    return yes;
#else
    return false;
#endif
}

template <class Body, class... Parameters>
bool runOnCpu(const platform::Launch& launch) {
    std::size_t offset = 0;
    // Braces: the arguments are unpacked in order.
    CpuRun<Body, Parameters...> run{
        launch, std::tuple<Parameters...>{unpack<Parameters>(launch.arguments, offset)...}};
    const bool found = std::apply(
        [&](auto&... arguments) { return (translate(launch, arguments) && ...); }, run.arguments);
    if (!found) return false;
    const std::size_t work = std::size_t(launch.grid.x) * launch.grid.y * launch.grid.z *
                             launch.block.x * launch.block.y * Body::workPerLane;
    auto item = run.item;
#if defined(__x86_64__)
    if (hasV3()) item = run.itemV3;
#endif
    launch.parallel(Body::Block::count(launch), work, item, &run);
    return true;
}

// --- Registration -------------------------------------------------------------------------

struct Instance {
    platform::Kernel kernel;
    const void* stub;
};

template <class Body, auto* stub, class... Parameters>
Instance instanceOf(void (*)(Parameters...)) {
    return {{mangledName<stub>(), &runOnCpu<Body, Parameters...>},
            reinterpret_cast<const void*>(stub)};
}

template <auto* stub, class Body>
Instance instance() {
    return instanceOf<Body, stub>(stub);
}

#endif

// The instances of several types as one list.
template <std::size_t... n>
std::array<Instance, (n + ...)> join(const std::array<Instance, n>&... lists) {
    std::array<Instance, (n + ...)> all{};
    std::size_t next = 0;
    auto append = [&](const auto& list) {
        for (const Instance& instance : list) all[next++] = instance;
    };
    (append(lists), ...);
    return all;
}

// What a body inherits: its block, and how much work an element is.
template <class Block_, std::size_t workPerLane_ = 1>
struct KernelBody {
    using Block = Block_;
    static constexpr std::size_t workPerLane = workPerLane_;
};

#ifdef __CUDACC__

// The CUDA plugin is built from the same units and collects their instances.
void collect(const Instance* instances, std::size_t count);

template <std::size_t n>
class DeviceUnit {
  public:
    explicit DeviceUnit(const std::array<Instance, n>& instances) { collect(instances.data(), n); }
};

#else

// A device source unit: registers its kernels when the library is loaded and takes them back at
// exit. One per unit, at namespace scope.
template <std::size_t n>
class DeviceUnit {
  public:
    explicit DeviceUnit(const std::array<Instance, n>& instances) {
        for (std::size_t i = 0; i < n; ++i) kernels_[i] = instances[i].kernel;
        image_ = {kernels_.data(), n};
        handle_ = __cudaRegisterFatBinary(&image_);
        for (const Instance& instance : instances) {
            auto* name = const_cast<char*>(instance.kernel.name);
            __cudaRegisterFunction(handle_, static_cast<const char*>(instance.stub), name, name, -1,
                                   nullptr, nullptr, nullptr, nullptr, nullptr);
        }
    }
    ~DeviceUnit() { __cudaUnregisterFatBinary(handle_); }
    DeviceUnit(const DeviceUnit&) = delete;
    DeviceUnit& operator=(const DeviceUnit&) = delete;

  private:
    std::array<platform::Kernel, n> kernels_;
    platform::FatBinary image_;
    void** handle_;
};

#endif

}  // namespace cudalib
