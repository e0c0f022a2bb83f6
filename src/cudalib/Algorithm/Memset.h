// Filling device memory with a value.
#pragma once

#include <cstddef>

#include "cudalib/vector_types.h"

namespace cudalib {

// Sets pointer[0 .. count-1] to value. T: unsigned char, char, unsigned int, int, float, double,
// float2, double2. A count of 0 launches nothing.
template <class T>
void memset(T* pointer, std::size_t count, T value);

}  // namespace cudalib
