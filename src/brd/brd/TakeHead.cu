#include "basic/magnitude.h"
#include "cudalib/kernel.h"

using lumo::RealOf;

template <class T>
LUMO_KERNEL void TakeHead_k(T* head, RealOf<T>* value) {
    cudalib::kernel([&](cudalib::Single single) {
        single.once([&] {
            *value = lumo::realPart(*head);
            *head = T(1);
        });
    });
}

LUMO_REGISTER(lumo::ElementTypes, &TakeHead_k<T>)
