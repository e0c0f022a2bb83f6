// Matrices in files of either format.
#pragma once

#include <complex>
#include <memory>
#include <string>

#include "dense.h"
#include "input_file.h"
#include "output_file.h"

namespace lumo {

// Which of the formats a file has is read from its first bytes. `others` are formats that the
// caller knows besides, for the message. Throws a FileError that begins with the file's name.
Dense readMatrix(InputFile& in, const char* others = "");

// Opens the file that a matrix is to be written to, null for an empty name. Its name ends in .mtx
// or .npy, else it is refused.
std::unique_ptr<OutputFile> openMatrix(const std::string& file);

// In the format that the file's name tells, in T's precision; Matrix Market to the standard output.
// x: column-major, m x n.
template <class T>
void writeMatrix(OutputFile& file, int m, int n, const T* x, bool isVector);

}  // namespace lumo
