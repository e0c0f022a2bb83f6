// Matrix Market files: array and coordinate; real, complex and integer; general, symmetric,
// skew-symmetric and Hermitian.
#pragma once

#include <iosfwd>

#include "dense.h"

namespace lumo {

// Duplicate coordinates are summed. `bytes` is the length of the file, negative if it has none,
// and makes short work of headers that announce too much. Throws a FileError that names the line.
Dense readMatrixMarket(std::istream& in, std::int64_t bytes);

// As an array. T: float or std::complex<float>; x is column-major, m x n.
template <class T>
void writeMatrixMarket(std::ostream& out, int m, int n, const T* x);

}  // namespace lumo
