// Eigenvalues and eigenvectors of symmetric and Hermitian matrices, in the element type T.
#pragma once

#include <vector>

#include "lumo.h"
#include "platform/element_types.h"

namespace lumo {

// A V = V diag(w), n x n, column-major without padding.
template <class T>
struct Eigensystem {
    Eigensystem(int n, bool vectors) : n(n), vectors(vectors), w(std::size_t(n)) {}

    int n;
    bool vectors;  // whether they are wanted
    std::vector<platform::RealOf<T>> w;
    std::vector<T> v;  // without vectors of no use
};

// Fills e by the library.
template <class T>
lumoStatus decompose(const std::vector<T>& a, Eigensystem<T>& e);

// The same by the CPU LAPACK, to compare with. Returns LAPACK's info.
template <class T>
int decomposeByCpu(const std::vector<T>& a, Eigensystem<T>& e);

// The Frobenius norms of A V - V diag(w) and of V^H V - I, by the library's products.
struct Errors {
    double residual, orthogonality;
};
template <class T>
Errors errorsOf(const std::vector<T>& a, const Eigensystem<T>& e);

}  // namespace lumo
