// A small step of the bidiagonal reduction on single elements of device memory.
#pragma once

#include "cudalib/launch.h"

template <class T>
void TakeHead_k(T* head, lumo::RealOf<T>* value);

namespace lumo {

// *value := *head, which is real, and *head := 1: the reflector of which it is the head is then
// stored as a whole vector.
template <class T>
void takeHead(T* head, RealOf<T>* value) {
    cudalib::launch(cudalib::OneThread(), &TakeHead_k<T>, head, value);
}

}  // namespace lumo
