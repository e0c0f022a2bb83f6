// Small steps of the bidiagonal reduction on single elements of device memory.
#pragma once

#include "common/complex.h"

namespace lumo {

// *value := *head, which is real, and *head := 1: the reflector of which it is the head is then
// stored as a whole vector.
template <class T>
void takeHead(T* head, RealOf<T>* value);

}  // namespace lumo
