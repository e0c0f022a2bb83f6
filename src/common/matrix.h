// Column-major matrices.
#pragma once

#include <cstddef>

namespace lumo {

// Element (i, j) of a matrix; an offset has 64 bits.
template <class T>
T* at(T* a, int lda, int i, int j) {
    return a + std::ptrdiff_t(j) * lda + i;
}

}  // namespace lumo
