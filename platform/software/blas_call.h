// How the software device runs a CUBLAS routine. Arguments are checked here: a reference XERBLA
// would end the process, where CUBLAS sets a word that cublasGetError reads and clears.
#pragma once

#include <array>
#include <atomic>
#include <cstring>
#include <string>

#include "platform/blas_arguments.h"
#include "platform/blas_threads.h"
#include "platform/fortran_blas.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/streams.h"
#include "platform/software/tiles.h"

namespace software {

// Whether CUBLAS has been started.
inline std::atomic<bool> blasReady{false};

inline std::size_t realSize(char type) {
    return platform::isDouble(type) ? 8 : 4;
}
inline std::size_t elementSize(char type) {
    return realSize(type) * (platform::isComplex(type) ? 2 : 1);
}

// A scalar of any element type, or a real one for complex elements, by value.
struct Scalar {
    alignas(16) unsigned char bytes[16] = {};
    Scalar() = default;  // zero, in any type
    Scalar(const void* value, std::size_t size) { std::memcpy(bytes, value, size); }

    static Scalar one(char type) {
        const double d = 1;
        const float s = 1;
        return platform::isDouble(type) ? Scalar(&d, sizeof d) : Scalar(&s, sizeof s);
    }
    Scalar conjugate(char type) const {
        Scalar z = *this;
        if (!platform::isComplex(type)) return z;
        // The highest bit of the imaginary part is its sign.
        z.bytes[elementSize(type) - 1] ^= 0x80;
        return z;
    }

    bool isNan(char type) const {
        return any(type, [](double part) { return part != part; });
    }
    bool isZero(char type) const {
        return !any(type, [](double part) { return part != 0; });
    }

  private:
    // Whether a part is so; behind the last one there are zeros.
    template <class Predicate>
    bool any(char type, Predicate is) const {
        float singles[4];
        double doubles[2];
        std::memcpy(singles, bytes, sizeof singles);
        std::memcpy(doubles, bytes, sizeof doubles);
        return platform::isDouble(type) ? is(doubles[0]) || is(doubles[1])
                                        : is(double(singles[0])) || is(double(singles[1]));
    }
};

// The scalars of C := alpha (a product of extent k) + beta C, and what a CPU BLAS may get wrong of
// them. If one that counts is not a number neither is any element of the result, but a BLAS may
// scale by it as if by zero. And without a product, alpha or k being zero, its operands, and alpha,
// are not to be read, but kernels for small matrices read them.
class Update {
  public:
    Update(char type, const Scalar& alphaOfCall, const Scalar& betaOfCall, int extent = 1)
        : alpha(alphaOfCall), beta(betaOfCall), k(alphaOfCall.isZero(type) ? 0 : extent) {
        if (k == 0) alpha = Scalar();
        elementSize_ = elementSize(type);
        nan_ = alpha.isNan(type) || beta.isNan(type);
    }

    // Runs the routine that writes this triangle (or all, uplo "A") of the m x n matrix c.
    template <class Routine>
    void apply(char uplo, int m, int n, void* c, std::size_t ld, Routine routine) const {
        if (!nan_) return routine();
        for (int j = 0; j < n; ++j) {
            const std::size_t begin = platform::oneOf(uplo, "L") ? j : 0;
            const std::size_t end = platform::oneOf(uplo, "U") ? j + 1 : m;
            constexpr int nan = 0xFF;  // in every byte
            std::memset(static_cast<char*>(c) + (j * ld + begin) * elementSize_, nan,
                        (end - begin) * elementSize_);
        }
    }

    Scalar alpha, beta;
    int k;

  private:
    std::size_t elementSize_;
    bool nan_;
};

// Operand `a` from its element (i, j) on; of op(A), where `trans` says what op is.
inline void* at(char type, void* a, std::ptrdiff_t i, std::ptrdiff_t j, int lda) {
    return static_cast<char*>(a) + (j * lda + i) * std::ptrdiff_t(elementSize(type));
}
inline void* atOf(char type, char trans, void* a, std::ptrdiff_t i, std::ptrdiff_t j, int lda) {
    return platform::oneOf(trans, "N") ? at(type, a, i, j, lda) : at(type, a, j, i, lda);
}

// Tiles of a product of so many multiplications and additions, which a core does several of at a
// time. Two for each thread, so that one that is late, as on a busy machine, has its work done by
// others.
inline Tiles productTiles(char type, int m, int n, double multiplications, Tiles::Cut cut,
                          int perThread = 2) {
    const double work = multiplications * (platform::isComplex(type) ? 4 : 1) *
                        (platform::isDouble(type) ? 2 : 1) / 8;
    constexpr double least = 1 << 17;  // above what libraries have special kernels for
    return {m, n, work, least, cut, perThread};
}

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

// The state of CUBLAS and the device's capability, then run(routines, bytes behind the operands,
// tile) for every tile, on the default stream. Without elements in the result there is nothing to
// do.
template <std::size_t n, class Run>
void submitRoutine(char type, const platform::BlasOperands<n>& operands, const Tiles& tiles,
                   Run run) {
    if (!blasReady) return setCublasError(CUBLAS_STATUS_NOT_INITIALIZED);
    const DeviceDescription& device = machine().devices[currentDevice()];
    if (platform::isDouble(type) && device.major * 10 + device.minor < 13)
        return setCublasError(CUBLAS_STATUS_ARCH_MISMATCH);
    if (!operands.valid) return setCublasError(CUBLAS_STATUS_INVALID_VALUE);
    if (operands.each.back().empty()) return;
    auto item = [type, run, tiles, each = operands.each](std::size_t k) {
        std::array<void*, n> bytes;
        for (std::size_t i = 0; i < n; ++i) {
            bytes[i] = bytesOf(each[i], elementSize(type));
            if (bytes[i] || each[i].empty()) continue;
            noteViolation("a CUBLAS operand is not all in device memory");
            return failAsynchronously(cudaErrorLaunchFailure);
        }
        const platform::OneBlasThread alone;
        withRoutines(type, [&](auto routines) { run(routines, bytes, tiles[k]); });
    };
    submit(nullptr, {item, tiles.count(), tiles.work()});
}

// A call of a CUBLAS routine: traced, failed on request, or submitted.
template <std::size_t n, class Run, class... Arguments>
void blasCall(char type, const char* name, const platform::BlasOperands<n>& operands,
              const Tiles& tiles, Run run, const Arguments&... arguments) {
    Injected fault{};
    if (instrumented.load(std::memory_order_relaxed))
        fault = observe((std::string("cublas") + type + name).c_str(), arguments...);
    if (fault.hit)
        setCublasError(fault.cublasError);
    else
        submitRoutine(type, operands, tiles, run);
}

}  // namespace software
