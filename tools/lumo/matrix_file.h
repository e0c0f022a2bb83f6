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

// In the format that the file's name tells. x: column-major, m x n; T: float or
// std::complex<float>.
class OutputFile;
template <class T>
void writeMatrix(OutputFile& file, int m, int n, const T* x, bool isVector);

// The same. The file appears under its name when it is complete, or not at all.
template <class T>
void writeMatrix(const std::string& file, int m, int n, const T* x, bool isVector);

}  // namespace lumo
