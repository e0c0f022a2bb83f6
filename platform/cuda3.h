// The CUDA runtime 3 and legacy CUBLAS interface, as far as the library uses it.
//
// Everything above the platform layer is written against these names. They stand for functions of
// this library that forward to the chosen platform, all hidden, so they neither clash with nor are
// captured by a CUDA runtime that the application links itself.
#pragma once

#include <cstddef>

#include "platform/cuda3_errors.h"
#include "platform/table.h"

#pragma GCC visibility push(hidden)

using namespace cuda3;
using cudaError_t = int;
using cublasStatus = int;

using cudaMemcpyKind = int;
constexpr cudaMemcpyKind cudaMemcpyHostToHost = 0;
constexpr cudaMemcpyKind cudaMemcpyHostToDevice = 1;
constexpr cudaMemcpyKind cudaMemcpyDeviceToHost = 2;
constexpr cudaMemcpyKind cudaMemcpyDeviceToDevice = 3;

using dim3 = platform::Dim3;
using cudaDeviceProp = platform::DeviceProperties;
using cudaStream_t = platform::Stream;
using cudaEvent_t = platform::Event;

extern "C" {
void** __cudaRegisterFatBinary(void* image);
void __cudaRegisterFunction(void** handle, const char* stub, char* deviceFunction,
                            const char* deviceName, int threadLimit, void* tid, void* bid,
                            void* blockDim, void* gridDim, int* warpSize);
void __cudaUnregisterFatBinary(void** handle);
cudaError_t cudaLaunch(const char* stub);
}

namespace platform {

// Which platform runs and why it was chosen; chooses it if no call has yet.
// Who is to factorise panels, where either can.
enum class Panels { asTuned, ofCpu, ofDevice };

struct Choice {
    const Table* table;
    const char* reason;
    bool available;  // or the reason is why nothing can run
    // A kernel of the library whose mangled name has this in it; null if there is none.
    const Kernel* (*kernel)(const char* partOfName);
    Panels panels;
};
const Choice& choice();

// The same for the lumo command, which uses the shared library of its own version: exported, but
// no part of the interface. A platform of the command's own runs if nothing has been chosen yet.
extern "C" __attribute__((visibility("default"))) const Choice* lumo_private_platform(
    const Table* own);

// Calls an entry of the chosen platform's table.
template <auto entry, class = decltype(entry)>
struct Forward;
template <auto entry, class Part, class Result, class... Arguments>
struct Forward<entry, Result (*Part::*)(Arguments...)> {
    static Result call(Arguments... arguments) { return (choice().table->*entry)(arguments...); }
};
template <auto entry>
inline constexpr auto* forward = &Forward<entry>::call;

// What CUDA 3 has no name for.
#define CUDA_ENTRY(...)
#define ENTRY(kind, result, name, parameters) inline constexpr auto* name = forward<&Table::name>;
#define OPTIONAL_ENTRY(...) ENTRY(__VA_ARGS__)
#include "platform/entries.inc"

}  // namespace platform

#define CUDA_ENTRY(kind, result, name, cudaName, parameters) \
    inline constexpr auto* cudaName = platform::forward<&platform::Table::name>;
#define BLAS_FORWARD(name, T, cublasName) \
    inline constexpr auto* cublasName = platform::forward<&platform::Blas<T>::name>;
// The names for real elements belong to another entry.
#define COMPLEX_BLAS_ENTRY(name, S, D, C, Z, parameters) \
    BLAS_FORWARD(name, std::complex<float>, C)           \
    BLAS_FORWARD(name, std::complex<double>, Z)
#define BLAS_ENTRY(name, S, D, C, Z, parameters) \
    BLAS_FORWARD(name, float, S)                 \
    BLAS_FORWARD(name, double, D)                \
    COMPLEX_BLAS_ENTRY(name, S, D, C, Z, parameters)
#include "platform/entries.inc"
#undef BLAS_FORWARD

#pragma GCC visibility pop
