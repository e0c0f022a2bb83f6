// NumPy's array files, versions 1.0 to 3.0: numbers of 1 to 8 bytes, real, complex and integer,
// in either byte and either storage order; half, single and double precision.
#pragma once

#include <iosfwd>

#include "dense.h"
#include "input_file.h"

namespace lumo {

constexpr char npyMagic[] = "\x93NUMPY";

// An array of one dimension is read as a column. Throws a FileError.
Dense readNpy(InputFile& in);

// In T's precision; x is column-major, m x n, and written as an array of one dimension if it
// `isVector`.
template <class T>
void writeNpy(std::ostream& out, int m, int n, const T* x, bool isVector);

}  // namespace lumo
