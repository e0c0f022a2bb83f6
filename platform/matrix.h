// Column-major matrices in somebody's memory, which may be a device's.
#pragma once

#include <cstddef>

namespace platform {

// A matrix from its element (i, j) on; an offset has 64 bits.
template <class T>
T* at(T* a, int ld, std::ptrdiff_t i, std::ptrdiff_t j) {
    return a + (j * ld + i);
}

template <class T>
struct MatrixView {
    T* data;
    int ld;

    T* at(int i, int j) const { return platform::at(data, ld, i, j); }
    T& operator()(int i, int j) const { return *at(i, j); }
};

}  // namespace platform
