// How the software device runs a CUBLAS routine. Arguments are checked here: a reference XERBLA
// would end the process, where CUBLAS sets a word that cublasGetError reads and clears.
#pragma once

#include <array>
#include <atomic>
#include <complex>
#include <cstring>

#include "platform/blas_arguments.h"
#include "platform/blas_threads.h"
#include "platform/cpu/blas.h"
#include "platform/matrix.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/streams.h"
#include "platform/software/tiles.h"

namespace software {

using platform::at;

// Whether CUBLAS has been started, and the stream of the calling thread's routines.
inline std::atomic<bool> blasReady{false};
inline thread_local platform::Stream blasStream = nullptr;

// The names of CUBLAS, which traces show.
template <class T>
struct Names {
#define BLAS_ENTRY(name, S, D, C, Z, parameters) \
    static constexpr const char* name = platform::ofType<T>(#S, #D, #C, #Z);
#include "platform/entries.inc"
};

// The scalars of C := alpha (a product of extent k) + beta C, and what a CPU BLAS may get wrong of
// them. If one that counts is not a number neither is any element of the result, but a BLAS may
// scale by it as if by zero. And without a product, alpha or k being zero, its operands, and alpha,
// are not to be read, but kernels for small matrices read them. Real scalars are those of a complex
// product with imaginary parts of zero.
template <class T>
class Update {
  public:
    Update(T alphaOfCall, T betaOfCall, int extent = 1)
        : alpha(alphaOfCall), beta(betaOfCall), k(alphaOfCall == T(0) ? 0 : extent) {
        if (k == 0) alpha = 0;
        nan_ = alpha != alpha || beta != beta;
    }

    // Runs the routine that writes this triangle (or all, uplo "A") of the m x n matrix c.
    template <class Routine>
    void apply(char uplo, int m, int n, T* c, std::size_t ld, Routine routine) const {
        if (!nan_) return routine();
        for (int j = 0; j < n; ++j) {
            const std::size_t begin = platform::oneOf(uplo, "L") ? j : 0;
            const std::size_t end = platform::oneOf(uplo, "U") ? j + 1 : m;
            constexpr int nan = 0xFF;  // in every byte
            std::memset(static_cast<void*>(c + j * ld + begin), nan, (end - begin) * sizeof(T));
        }
    }

    T alpha, beta;
    int k;

  private:
    bool nan_;
};

// Operand `a` from the element (i, j) of op(A) on, where `trans` says what op is.
template <class T>
T* atOf(char trans, T* a, int ld, int i, int j) {
    return platform::oneOf(trans, "N") ? at(a, ld, i, j) : at(a, ld, j, i);
}

// Tiles of a product of so many multiplications and additions, which a core does several of at a
// time. Two for each thread, so that one that is late, as on a busy machine, has its work done by
// others.
template <class T>
Tiles productTiles(int m, int n, double multiplications, Tiles::Cut cut, int perThread = 2) {
    const double work =
        multiplications * (platform::isComplex<T> ? 4 : 1) * (platform::isDouble<T> ? 2 : 1) / 8;
    constexpr double least = 1 << 17;  // above what libraries have special kernels for
    return {m, n, work, least, cut, perThread};
}

// The elements behind an operand, null if they are not all memory of the device.
template <class T>
T* elementsOf(const platform::BlasOperand& o) {
    if (o.empty()) return static_cast<T*>(const_cast<void*>(o.pointer));
    const std::size_t elements = std::size_t(o.columns - 1) * std::size_t(o.ld) + o.rows;
    return static_cast<T*>(deviceHeap().address(o.pointer, elements * sizeof(T)));
}

// The state of CUBLAS and the device's capability, then run(elements behind the operands, tile) for
// every tile. Without elements in the result there is nothing to do.
template <class T, std::size_t n, class Run>
void submitRoutine(const platform::BlasOperands<n>& operands, const Tiles& tiles, const Run& run) {
    if (!blasReady) return setCublasError(CUBLAS_STATUS_NOT_INITIALIZED);
    const DeviceDescription& device = machine().devices[currentDevice()];
    if (platform::isDouble<T> && device.major * 10 + device.minor < 13)
        return setCublasError(CUBLAS_STATUS_ARCH_MISMATCH);
    if (!operands.valid) return setCublasError(CUBLAS_STATUS_INVALID_VALUE);
    if (operands.each.back().empty()) return;
    auto item = [run, tiles, each = operands.each](std::size_t k) {
        std::array<T*, n> elements;
        for (std::size_t i = 0; i < n; ++i) {
            elements[i] = elementsOf<T>(each[i]);
            if (elements[i] || each[i].empty()) continue;
            noteViolation("a CUBLAS operand is not all in device memory");
            return failAsynchronously(cudaErrorLaunchFailure);
        }
        const platform::OneBlasThread alone;
        run(elements, tiles[k]);
    };
    submit(blasStream, {item, tiles.count(), tiles.work()});
}

// A call of a CUBLAS routine: traced, failed on request, or submitted.
template <class T, std::size_t n, class Run, class... Arguments>
void blasCall(const char* name, const platform::BlasOperands<n>& operands, const Tiles& tiles,
              const Run& run, const Arguments&... arguments) {
    const Injected fault = observe(name, arguments...);
    if (fault.hit)
        setCublasError(fault.cublasError);
    else
        submitRoutine<T>(operands, tiles, run);
}

}  // namespace software
