#include "brd/brd/brd.h"

#include "cudalib/launch.h"

template <class T>
void TakeHead_k(T* head, lumo::RealOf<T>* value);

namespace lumo {

template <class T>
void takeHead(T* head, RealOf<T>* value) {
    cudalib::launch(cudalib::OneThread(), &TakeHead_k<T>, head, value);
}

LUMO_INSTANTIATE(takeHead)

}  // namespace lumo
