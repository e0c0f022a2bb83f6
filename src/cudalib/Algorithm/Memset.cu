#include "cudalib/launch.h"
#include "cudalib/vector_types.h"

template <class T>
struct MemsetBody : cudalib::KernelBody<cudalib::Elements> {
    LUMO_DEVICE static void run(cudalib::Elements elements, T* ptr, T value, std::size_t n) {
        elements.each(n, [&](std::size_t i) { ptr[i] = value; });
    }
};

template <class Map, class T>
LUMO_KERNEL void CudaMemsetTypeKernel(T* ptr, T value, std::size_t n) {
    cudalib::kernel<MemsetBody<T>>(LUMO_STUB(CudaMemsetTypeKernel<Map, T>), ptr, value, n);
}

namespace {

template <class T>
std::array<cudalib::Instance, 1> instance() {
    return {{cudalib::instance<&CudaMemsetTypeKernel<cudalib::Map1D, T>, MemsetBody<T>>()}};
}

const cudalib::DeviceUnit unit{cudalib::join(
    instance<unsigned char>(), instance<char>(), instance<unsigned int>(), instance<int>(),
    instance<float>(), instance<double>(), instance<float2>(), instance<double2>())};

}  // namespace
