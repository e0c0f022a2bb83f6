// Singular value decompositions and the approximations that they give, in the element type T.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <vector>

#include "common/residual.h"
#include "lumo.h"
#include "platform/element_types.h"

namespace lumo {

// A = U diag(s) V^H, column-major without padding: u is m x k, vt k x n, k = min(m, n); both are
// empty if only the values are wanted.
template <class T>
struct Decomposition {
    Decomposition(int m, int n, bool vectors);

    int m, n;
    std::vector<platform::RealOf<T>> s;
    std::vector<T> u, vt;
};

// A matrix, or a channel of an image.
template <class T>
struct Part {
    std::string name;  // of the channel; empty if there is but one
    std::vector<T> a;
    Decomposition<T> d;
};

// What is decomposed. All norms are those of diag(part, part, ...).
template <class T>
struct Whole {
    int m = 0, n = 0;
    std::vector<Part<T>> parts;
    bool vectors = false;

    int count() const { return std::min(m, n); }
    double frobenius() const {
        double norm = 0;
        for (const Part<T>& part : parts)
            norm = std::hypot(norm, euclideanNorm(part.a.size(), part.a.data()));
        return norm;
    }
    // The norms of what an approximation of this rank leaves out; of the whole, for rank 0.
    double frobeniusBeyond(int rank) const {
        double norm = 0;
        for (const Part<T>& part : parts)
            norm = std::hypot(norm, euclideanNorm(part.d.s.size() - rank, part.d.s.data() + rank));
        return norm;
    }
    double largestBeyond(int rank) const {
        platform::RealOf<T> largest = 0;
        for (const Part<T>& part : parts)
            if (rank < count()) largest = std::max(largest, part.d.s[rank]);
        return largest;
    }
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
