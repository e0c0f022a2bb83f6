// What a kernel costs: a description for each that is registered, beside it, made of the arguments
// of its launch. On a platform that only keeps time it stands for the kernel.
//
// A description is a type with a function `of`, which takes the kernel's arguments. It counts what
// moves through memory, what is computed, and what must wait for what; how fast that goes is the
// machine's to say.
#pragma once

#include <algorithm>

#include "common/complex.h"
#include "platform/table.h"

namespace cudalib {

using platform::Work;

// A multiplication and an addition, in operations of single precision: of double, one counts twice.
template <class T>
constexpr double flopsOfProduct = (lumo::isComplex<T> ? 8 : 2) * sizeof(lumo::RealOf<T>) / 4;
// The rotation of a pair of elements, for each of them.
template <class T>
constexpr double flopsOfRotation = 6. * sizeof(T) / 4;

// Memory moves in sectors: an element alone costs as much as its neighbours with it.
template <class T>
constexpr double bytesOfLoneElement = std::max<double>(32, sizeof(T));

// The norm of `count` elements of a random matrix.
template <class T>
Work normOf(double count, lumo::RealOf<T>* norm) {
    Work w;
    w.norm = norm;
    w.normOf = lumo::isComplex<T> ? 2 * count : count;
    w.size = sizeof *norm;
    return w;
}

// For each element of a vector, or of a matrix or about half of it, `touched` elements are read or
// written.
template <class T, int touched = 2>
struct OnVector {
    template <class... Rest>
    static Work of(int n, Rest...) {
        return {double(n) * touched * sizeof(T)};
    }
};
template <class T, int touched = 2>
struct OnMatrix {
    template <class... Rest>
    static Work of(int m, int n, Rest...) {
        return {double(m) * n * touched * sizeof(T)};
    }
};
template <class T, int touched = 2>
struct OnTriangle {
    template <class... Rest>
    static Work of(int m, int n, Rest...) {
        return {double(m) * n * touched * sizeof(T) / 2};
    }
};
struct OnElement {
    template <class... Rest>
    static Work of(Rest...) {
        return {bytesOfLoneElement<double>};
    }
};

}  // namespace cudalib
