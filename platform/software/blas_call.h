// How the software device runs a CUBLAS routine. Arguments are checked here: a reference XERBLA
// would end the process, where CUBLAS sets a word that cublasGetError reads and clears.
#pragma once

#include <array>
#include <atomic>
#include <cstring>
#include <string>

#include "platform/blas_arguments.h"
#include "platform/software/device.h"
#include "platform/software/fortran_blas.h"
#include "platform/software/instruments.h"
#include "platform/software/streams.h"

namespace software {

// Whether CUBLAS has been started.
inline std::atomic<bool> blasReady{false};

// A scalar of any element type, by value.
struct Scalar {
    alignas(16) unsigned char bytes[16];
    Scalar(const void* value, std::size_t size) { std::memcpy(bytes, value, size); }
};

inline std::size_t realSize(char type) {
    return platform::isDouble(type) ? 8 : 4;
}
inline std::size_t elementSize(char type) {
    return realSize(type) * (platform::isComplex(type) ? 2 : 1);
}

// The beta of gemv and the rank updates. If it is not a number neither is the result, but a CPU
// BLAS may scale by it as if by zero. So it goes into the result ahead of the call, and beta
// becomes 1.
class Beta {
  public:
    Beta(const void* value, char type, std::size_t size)
        : value_(value, size), elementSize_(elementSize(type)) {
        const double oneDouble = 1;
        const float oneFloat = 1;
        for (std::size_t at = 0; at < size; at += realSize(type))
            nan_ = nan_ || (platform::isDouble(type) ? isNan<double>(at) : isNan<float>(at));
        if (!nan_) return;
        std::memset(value_.bytes, 0, sizeof value_.bytes);
        if (platform::isDouble(type))
            std::memcpy(value_.bytes, &oneDouble, sizeof oneDouble);
        else
            std::memcpy(value_.bytes, &oneFloat, sizeof oneFloat);
    }

    // What to hand to the routine that is about to write this triangle (or all, uplo "A") of c.
    const void* over(char uplo, int m, int n, void* c, std::size_t ld) const {
        for (int j = 0; nan_ && j < n; ++j) {
            const std::size_t begin = platform::oneOf(uplo, "L") ? j : 0;
            const std::size_t end = platform::oneOf(uplo, "U") ? j + 1 : m;
            constexpr int nan = 0xFF;  // in every byte
            std::memset(static_cast<char*>(c) + (j * ld + begin) * elementSize_, nan,
                        (end - begin) * elementSize_);
        }
        return value_.bytes;
    }

  private:
    template <class Real>
    bool isNan(std::size_t at) const {
        Real part;
        std::memcpy(&part, value_.bytes + at, sizeof part);
        return part != part;
    }

    Scalar value_;
    std::size_t elementSize_;
    bool nan_ = false;
};

// The bytes behind an operand, null if they are not all memory of the device.
inline void* bytesOf(const platform::BlasOperand& o, std::size_t elementSize) {
    if (o.empty()) return const_cast<void*>(o.pointer);
    const std::size_t elements = std::size_t(o.columns - 1) * std::size_t(o.ld) + o.rows;
    return deviceHeap().address(o.pointer, elements * elementSize);
}

// Calls f with the Fortran routines of a type.
template <class F>
void withRoutines(char type, F f) {
    switch (type) {
        case 'S':
            return f(blas::Routines<float>{});
        case 'D':
            return f(blas::Routines<double>{});
        case 'C':
            return f(blas::Routines<blas::FloatComplex>{});
        default:
            return f(blas::Routines<blas::DoubleComplex>{});
    }
}

// The state of CUBLAS and the device's capability, then run(routines, bytes behind the operands)
// on the default stream. Without elements in the result there is nothing to do.
template <std::size_t n, class Run>
void submitRoutine(char type, const platform::BlasOperands<n>& operands, Run run) {
    if (!blasReady) return setCublasError(CUBLAS_STATUS_NOT_INITIALIZED);
    const DeviceDescription& device = machine().devices[currentDevice()];
    if (platform::isDouble(type) && device.major * 10 + device.minor < 13)
        return setCublasError(CUBLAS_STATUS_ARCH_MISMATCH);
    if (!operands.valid) return setCublasError(CUBLAS_STATUS_INVALID_VALUE);
    if (operands.each.back().empty()) return;
    submit(nullptr, [type, run, each = operands.each] {
        std::array<void*, n> bytes;
        for (std::size_t i = 0; i < n; ++i) {
            bytes[i] = bytesOf(each[i], elementSize(type));
            if (bytes[i] || each[i].empty()) continue;
            noteViolation("a CUBLAS operand is not all in device memory");
            return failAsynchronously(cudaErrorLaunchFailure);
        }
        withRoutines(type, [&](auto routines) { run(routines, bytes); });
    });
}

// A call of a CUBLAS routine: traced, failed on request, or submitted.
template <std::size_t n, class Run, class... Arguments>
void blasCall(char type, const char* name, const platform::BlasOperands<n>& operands, Run run,
              const Arguments&... arguments) {
    const Injected fault = observe((std::string("cublas") + type + name).c_str(), arguments...);
    if (fault.hit)
        setCublasError(fault.cublasError);
    else
        submitRoutine(type, operands, run);
}

}  // namespace software
