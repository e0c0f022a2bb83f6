// Matrices in files of either format.
#pragma once

#include <complex>
#include <string>

#include "dense.h"

namespace lumo {

// Which of the formats a file has is read from its first bytes. Throws a FileError that begins
// with the file's name.
Dense readMatrix(const std::string& file);

// Refuses a name that ends in neither .mtx nor .npy, before any work is done for it.
void checkOutputName(const std::string& file);

// x: column-major, m x n. The file appears under its name when it is complete, or not at all.
// T: float or std::complex<float>.
template <class T>
void writeMatrix(const std::string& file, int m, int n, const T* x, bool isVector);

}  // namespace lumo
