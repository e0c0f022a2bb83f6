// Device memory for matrices, with the pitch that the library chooses.
#pragma once

#include "common/complex.h"
#include "common/state.h"
#include "cudalib/allocators.h"
#include "platform/element_types.h"

namespace lumo {

// The pitch of a matrix handed to CUBLAS and to kernels, in elements: rows rounded up to the
// device generation's granule, and one granule more where consecutive columns would otherwise
// start on the same memory partition. Zero rows get a granule too.
template <class T>
std::size_t blasPitch(std::size_t rows, int capability, bool doublePrecision) {
    const bool first = capability >= 10 && capability <= 13;
    constexpr bool real = !isComplex<T>;
    constexpr bool wide = platform::isDouble<T>;
    const std::size_t granule = first  ? (wide ? 48 : 32)
                                : real ? (wide ? 64 : 96)
                                       : (wide ? 32 : 64);
    const std::size_t bound = (doublePrecision ? 2048 : 1536) / sizeof(T);
    const std::size_t pitch = (rows + granule - 1) / granule * granule;
    return pitch % bound == 0 ? pitch + granule : pitch;
}

// Device memory with the library's pitch, for every matrix that CUBLAS or a kernel works on.
template <class T>
class BlasAllocator : public cudalib::CudaPitchAllocator<T> {
  public:
    T* allocate(cudalib::Extent extent, unsigned depth) override {
        const std::size_t pitch = blasPitch<T>(extent.rows, computeCapability(), doublePrecision());
        void* pointer = nullptr;
        const std::size_t bytes = cudalib::checkedProduct(extent.columns, depth, sizeof(T), pitch);
        cudalib::allocateOrThrow([&] { return cudaMalloc(&pointer, bytes); });
        this->setPitch(pitch);
        return static_cast<T*>(pointer);
    }
};

}  // namespace lumo
