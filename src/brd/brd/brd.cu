#include "basic/magnitude.h"
#include "cudalib/launch.h"

using lumo::Complex;
using lumo::RealOf;

template <class T>
struct TakeHeadBody : cudalib::KernelBody<cudalib::Single> {
    LUMO_DEVICE static void run(cudalib::Single single, T* head, RealOf<T>* value) {
        single.once([&] {
            *value = lumo::realPart(*head);
            *head = T(1);
        });
    }
};

template <class T>
LUMO_KERNEL void TakeHead_k(T* head, RealOf<T>* value) {
    cudalib::kernel<TakeHeadBody<T>>(LUMO_STUB(TakeHead_k<T>), head, value);
}

namespace {

template <class T>
std::array<cudalib::Instance, 1> instances() {
    return {{cudalib::instance<&TakeHead_k<T>, TakeHeadBody<T>>()}};
}

const cudalib::DeviceUnit unit{cudalib::join(instances<float>(), instances<double>(),
                                             instances<Complex<float>>(),
                                             instances<Complex<double>>())};

}  // namespace
