#include "cudalib/kernel.h"

template <class T>
LUMO_KERNEL void MakeRealSingle_k(T* p) {
    cudalib::kernel([&](cudalib::Single single) { single.once([&] { p->im = 0; }); });
}

LUMO_REGISTER(lumo::ComplexTypes, cudalib::Kernel<&MakeRealSingle_k<T>, cudalib::OnElement>)
