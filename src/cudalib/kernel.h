// What makes a function a kernel: the words of a device source unit (Unit.cu).
//
//     template <class T>
//     LUMO_KERNEL void Fill_k(int n, T* x, T value) {
//         cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
//             elements.each(n, [&](std::size_t i) { x[i] = value; });
//         });
//     }
//
//     LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&Fill_k<T>, cudalib::OnVector<T, 1>>)
//
// A kernel is a function template marked LUMO_KERNEL whose only statement is cudalib::kernel(f) or
// the call of a LUMO_DEVICE function that ends there; f is the kernel's text for one block
// (block.h), and takes the kind of block that it is written for. LUMO_INLINED, which only
// Single does without, has g++ optimise it as one with its regions: else not all are vectorised. A
// table that is indexed at run time is passed as LUMO_GRID_CONSTANT: else a GPU copies it to every
// thread's local memory.
//
// The function runs one block on both devices, on a GPU the thread's part of it. Its address is the
// handle that it is launched by; its mangled name, equal under both compilers, is the kernel's
// name. LUMO_REGISTER registers kernels for each type T of a list, at the end of a unit, each with
// the description of what it costs (work.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>
#include <vector>

#include "common/element_types.h"
#include "cudalib/block.h"
#include "cudalib/processor.h"
#include "cudalib/work.h"

#ifdef __CUDACC__
#define LUMO_KERNEL __global__
#define LUMO_INLINED
#if defined(__CUDA_ARCH__) && __CUDA_ARCH__ >= 700  // earlier devices have to copy
#define LUMO_GRID_CONSTANT __grid_constant__ const
#else
#define LUMO_GRID_CONSTANT const
#endif
#else
#define LUMO_KERNEL __attribute__((flatten))
#define LUMO_INLINED __attribute__((always_inline))
#define LUMO_GRID_CONSTANT const
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

// The kind of block that a text is written for.
template <class F, class Block>
Block blockOf(void (F::*)(Block) const);

#ifdef __CUDACC__

// Runs f on this thread's block. An element is `workPerLane` elementary operations' work, by which
// a CPU judges how many threads to wake.
template <std::size_t workPerLane = 1, class F>
LUMO_DEVICE void kernel(F f) {
    f(decltype(blockOf(&F::operator()))::current());
}

// What the CUDA plugin, which is built from the same units, knows a kernel by.
struct Instance {
    const char* name;
    const void* stub;
};

template <auto* function, class Description, auto* /*wide*/>
Instance instance() {
    return {mangledName<function>(), reinterpret_cast<const void*>(function)};
}

void collect(const std::vector<Instance>& instances);

class Registration {
  protected:
    explicit Registration(const std::vector<Instance>& instances) { collect(instances); }
};

#else

// --- A kernel executed by the CPU ---------------------------------------------------------

// How many merged blocks a launch has, and how much work an element is.
struct Effort {
    std::size_t blocks, workPerLane;
};

// What a GPU has in registers of its own: the launch and the block that a thread is executing. A
// kernel that is asked for its effort tells it and does nothing else.
struct Turn {
    const platform::Launch* launch;
    std::size_t block;
    Effort* asked;
};
inline thread_local Turn turn;

template <std::size_t workPerLane = 1, class F>
LUMO_DEVICE void kernel(F f) {
    using Block = decltype(blockOf(&F::operator()));
    if (turn.asked)
        *turn.asked = {Block::count(*turn.launch), workPerLane};
    else
        f(Block::item(*turn.launch, turn.block));
}

// Takes the next argument out of a packed block.
template <class T>
T unpack(const unsigned char* block, std::size_t& offset) {
    offset = (offset + alignof(T) - 1) / alignof(T) * alignof(T);
    T argument;
    constexpr std::size_t size = sizeof(T);  // NOLINT(bugprone-sizeof-expression): of the pointer
    std::memcpy(&argument, block + offset, size);
    offset += size;
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

template <auto* function, auto* wide, class... Parameters>
struct CpuRun {
    platform::Launch launch;
    std::tuple<Parameters...> arguments;

    Effort effort() const {
        Effort effort;
        take<function>({&launch, 0, &effort}, std::index_sequence_for<Parameters...>());
        return effort;
    }

    // One merged block, compiled three times: for baseline x86-64, since that is what a package is
    // built for, for processors with AVX2 and FMA, and for those with AVX-512, whose text may be
    // written in wider vectors. The first is the kernel's own function, the others have all of it
    // within.
    static void item(const void* run, std::size_t k) { text<function>(run, k); }
#if defined(__x86_64__)
    __attribute__((flatten, target("arch=x86-64-v3"))) static void itemV3(const void* run,
                                                                          std::size_t k) {
        text<function>(run, k);
    }
    __attribute__((flatten, target("arch=x86-64-v4"))) static void itemV4(const void* run,
                                                                          std::size_t k) {
        text<wide>(run, k);
    }
#endif

  private:
    template <auto* kernel>
    LUMO_DEVICE static void text(const void* context, std::size_t k) {
        const auto& run = *static_cast<const CpuRun*>(context);
        run.template take<kernel>({&run.launch, k, nullptr},
                                  std::index_sequence_for<Parameters...>());
    }
    // Not by std::apply: of a long text the compiler made a function of its own, which both items
    // called and which was baseline code.
    template <auto* kernel, std::size_t... n>
    LUMO_DEVICE void take(const Turn& its, std::index_sequence<n...>) const {
        turn = its;
        kernel(std::get<n>(arguments)...);
    }
};

template <auto* function, auto* wide, class... Parameters>
bool runOnCpu(const platform::Launch& launch) {
    std::size_t offset = 0;
    // Braces: the arguments are unpacked in order.
    CpuRun<function, wide, Parameters...> run{
        launch, std::tuple<Parameters...>{unpack<Parameters>(launch.arguments, offset)...}};
    const bool found = std::apply(
        [&](auto&... arguments) { return (translate(launch, arguments) && ...); }, run.arguments);
    if (!found) return false;
    const Effort effort = run.effort();
    const std::size_t work = std::size_t(launch.grid.x) * launch.grid.y * launch.grid.z *
                             launch.block.x * launch.block.y * effort.workPerLane;
    auto item = run.item;
#if defined(__x86_64__)
    if (vectors() == Vectors::avx512)
        item = run.itemV4;
    else if (vectors() == Vectors::avx2)
        item = run.itemV3;
#endif
    launch.parallel(effort.blocks, work, item, &run);
    return true;
}

// --- Registration -------------------------------------------------------------------------

struct Instance {
    platform::Kernel kernel;
    const void* stub;
};

// What a launch costs that has these arguments, which are not looked behind.
template <class Description, class... Parameters>
Work workOf(const unsigned char* arguments) {
    std::size_t offset = 0;
    // Braces: the arguments are unpacked in order.
    const std::tuple<Parameters...> all{unpack<Parameters>(arguments, offset)...};
    return std::apply([](const auto&... each) { return Description::of(each...); }, all);
}

template <auto* function, class Description, auto* wide, class... Parameters>
Instance instanceOf(void (*)(Parameters...)) {
    return {{mangledName<function>(), &runOnCpu<function, wide, Parameters...>,
             &workOf<Description, Parameters...>},
            reinterpret_cast<const void*>(function)};
}

template <auto* function, class Description, auto* wide>
Instance instance() {
    return instanceOf<function, Description, wide>(function);
}

class Registration {
  public:
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

  protected:
    explicit Registration(const std::vector<Instance>& instances) {
        for (const Instance& instance : instances) kernels_.push_back(instance.kernel);
        image_ = {kernels_.data(), kernels_.size()};
        handle_ = __cudaRegisterFatBinary(&image_);
        for (const Instance& instance : instances) {
            auto* name = const_cast<char*>(instance.kernel.name);
            __cudaRegisterFunction(handle_, static_cast<const char*>(instance.stub), name, name, -1,
                                   nullptr, nullptr, nullptr, nullptr, nullptr);
        }
    }
    ~Registration() { __cudaUnregisterFatBinary(handle_); }

  private:
    std::vector<platform::Kernel> kernels_;
    platform::FatBinary image_;
    void** handle_;
};

#endif

// A kernel, the description of its cost, and what CPUs with AVX-512 run instead (packs.h).
template <auto* function, class Description, auto* wide = function>
struct Kernel {
    static Instance registered() { return instance<function, Description, wide>(); }
};

template <class... Kernel>
struct Kernels {
    static void appendTo(std::vector<Instance>& instances) {
        (instances.push_back(Kernel::registered()), ...);
    }
};

// Registers the kernels of the lists when the library is loaded and takes them back at exit.
template <class... Lists>
class DeviceUnit : Registration {
  public:
    DeviceUnit() : Registration(instances()) {}

  private:
    static std::vector<Instance> instances() {
        std::vector<Instance> all;
        (Lists::appendTo(all), ...);
        return all;
    }
};

}  // namespace cudalib

// A unit's type is made of its kernels: of templates that two units have under one name in their
// unnamed namespaces, g++ makes the same symbol.
#define LUMO_REGISTER(types, ...)                                                  \
    namespace {                                                                    \
    template <class T>                                                             \
    using LUMO_HERE(Kernels) = cudalib::Kernels<__VA_ARGS__>;                      \
    const types::Each<cudalib::DeviceUnit, LUMO_HERE(Kernels)> LUMO_HERE(kernels); \
    }
#define LUMO_HERE(name) LUMO_AT(name, __LINE__)
#define LUMO_AT(name, line) LUMO_JOINED(name, line)
#define LUMO_JOINED(name, line) name##line
