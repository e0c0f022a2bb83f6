// Matrix Market files: array and coordinate; real, complex, integer and pattern; general,
// symmetric, skew-symmetric and Hermitian.
#pragma once

#include <iosfwd>

#include "dense.h"
#include "input_file.h"

namespace lumo {

// Duplicate coordinates are summed; the elements of a pattern are ones. Throws a FileError that
// names the line.
Dense readMatrixMarket(InputFile& in);

// As an array, with the digits that tell T's numbers apart. x is column-major, m x n.
template <class T>
void writeMatrixMarket(std::ostream& out, int m, int n, const T* x);

}  // namespace lumo
