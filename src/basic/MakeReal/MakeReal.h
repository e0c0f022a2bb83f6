// Dropping an imaginary part, in device memory.
#pragma once

#include "common/complex.h"

namespace lumo {

// *p := its real part.
template <class R>
void makeReal(Complex<R>* p);

}  // namespace lumo
