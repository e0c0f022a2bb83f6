// How the emulated CUBLAS runs a routine: the operands are checked to the byte, in the call; the
// CPU's BLAS computes when the stream comes to it.
#pragma once

#include <cublas_v2.h>

#include <algorithm>
#include <array>
#include <complex>
#include <string>

#include "platform/blas_arguments.h"
#include "platform/cuda/emulation/counters.h"
#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/rounding_noise.h"
#include "platform/cuda/emulation/settings.h"
#include "platform/cuda/emulation/streams.h"

struct cublasContext {
    int device;
    cudaStream_t stream;
};

namespace emulated {

// Whether a handle can be used; otherwise what the call returns.
bool usable(cublasHandle_t handle, const char* name, cublasStatus_t& status);

// A scalar of the host's, read in the call. CUBLAS may load it as a whole.
template <class T, class Native>
T scalar(const Native* p, const char* name) {
    if (uintptr_t(p) % alignof(Native) && firstTime(Kind::operand, name, "scalar"))
        found(Kind::operand, "%s: a scalar at %p, which is not aligned to %zu bytes", name,
              static_cast<const void*>(p), alignof(Native));
    return *reinterpret_cast<const T*>(p);
}

// Where the emulation reaches an operand.
template <class T>
T* elements(const platform::BlasOperand& o, const char* name) {
    if (o.empty()) return nullptr;
    if (uintptr_t(o.pointer) % alignof(T))
        found(Kind::operand, "%s: an operand that is not aligned to its type", name);
    const std::size_t n = std::size_t(o.columns - 1) * std::size_t(o.ld) + std::size_t(o.rows);
    return static_cast<T*>(deviceRange(o.pointer, n * sizeof(T), name));
}

// Runs run(elements behind the operands) on the handle's stream. `noisy` is the part of the result
// that gets rounding noise: a triangle, all of it ("A") or nothing ("-").
template <class T, std::size_t n, class Run>
cublasStatus_t blasCall(cublasHandle_t handle, const char* name,
                        const platform::BlasOperands<n>& operands, char noisy, const Run& run) {
    cublasStatus_t status = CUBLAS_STATUS_SUCCESS;
    if (!usable(handle, name, status)) return status;
    if (!operands.valid) {
        found(Kind::operand, "%s: an argument that CUBLAS refuses", name);
        return CUBLAS_STATUS_INVALID_VALUE;
    }
    const platform::BlasOperand& result = operands.each.back();
    if (result.empty()) return status;
    std::array<T*, n> at;
    for (std::size_t i = 0; i < n; ++i) at[i] = elements<T>(operands.each[i], name);
    Stream* stream = streamOf(handle->stream);
    if (stickyError() || !stream) return CUBLAS_STATUS_EXECUTION_FAILED;
    submit(*stream, [=] {
        run(at);
        if (settings().noise) addRoundingNoise(at.back(), result, noisy);
    });
    return status;
}

}  // namespace emulated
