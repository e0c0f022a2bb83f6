#include "cudalib/kernel.h"
#include "cudalib/vector_types.h"

template <class Map, class T>
LUMO_KERNEL void CudaMemsetTypeKernel(T* pointer, T value, std::size_t n) {
    cudalib::kernel([&](cudalib::Elements elements) LUMO_INLINED {
        elements.each(n, [&](std::size_t i) { pointer[i] = value; });
    });
}

using Values = lumo::Types<unsigned char, char, unsigned int, int, float, double, float2, double2>;

template <class T>
struct MemsetCost {
    static cudalib::Work of(T*, T, std::size_t n) { return {double(n) * sizeof(T)}; }
};

LUMO_REGISTER(Values, cudalib::Kernel<&CudaMemsetTypeKernel<cudalib::Map1D, T>, MemsetCost<T>>)
