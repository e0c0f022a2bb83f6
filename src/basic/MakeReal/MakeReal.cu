#include "cudalib/launch.h"

using lumo::Complex;

template <class T>
struct MakeRealBody : cudalib::KernelBody<cudalib::Single> {
    LUMO_DEVICE static void run(cudalib::Single single, T* p) {
        single.once([&] { p->im = 0; });
    }
};

template <class T>
LUMO_KERNEL void MakeRealSingle_k(T* p) {
    cudalib::kernel<MakeRealBody<T>>(LUMO_STUB(MakeRealSingle_k<T>), p);
}

namespace {

template <class T>
std::array<cudalib::Instance, 1> instances() {
    return {{cudalib::instance<&MakeRealSingle_k<T>, MakeRealBody<T>>()}};
}

const cudalib::DeviceUnit unit{
    cudalib::join(instances<Complex<float>>(), instances<Complex<double>>())};

}  // namespace
