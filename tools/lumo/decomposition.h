// Singular value decompositions and the approximations that they give, in the element type T: float
// or std::complex<float>.
#pragma once

#include <complex>
#include <vector>

#include "lumo.h"

namespace lumo {

// A = U diag(s) V^H, column-major without padding: u is m x k, vt k x n, k = min(m, n); both are
// empty if only the values are wanted.
template <class T>
struct Decomposition {
    Decomposition(int m, int n, bool vectors);

    int m, n;
    std::vector<float> s;
    std::vector<T> u, vt;
};

// Fills d by the library. Overwrites a.
template <class T>
lumoStatus decompose(std::vector<T>& a, Decomposition<T>& d);

// The same by the CPU LAPACK, to compare with. Returns LAPACK's info.
template <class T>
int decomposeByCpu(std::vector<T>& a, Decomposition<T>& d);

// The m x n matrix of the first `rank` singular values and vectors, by the library.
template <class T>
lumoStatus approximate(const Decomposition<T>& d, int rank, std::vector<T>& result);

}  // namespace lumo
