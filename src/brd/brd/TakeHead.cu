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

template <class T>
struct TakeHeadCost {
    static cudalib::Work of(const T* head, RealOf<T>* value) {
        cudalib::Work w = cudalib::normOf<T>(0, value);
        w.bytes = 2 * cudalib::bytesOfLoneElement<T>;
        w.normFrom = head;
        return w;
    }
};

LUMO_REGISTER(lumo::ElementTypes, cudalib::Kernel<&TakeHead_k<T>, TakeHeadCost<T>>)
