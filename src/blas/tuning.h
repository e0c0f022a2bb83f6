// Sizes at which BLAS operations are split: data, in one place. Tests shrink them to reach split
// paths with small matrices.
#pragma once

#include "common/state.h"

namespace lumo {

struct BlasTuning {
    int gemmLimit = 134217216;  // elements of an operand that one CUBLAS gemm call works on
    int unblocked = 1023;       // symmetric operations with both sizes above it go by blocks
    int block = 1024;           // of so many rows and columns
};

inline BlasTuning blasTuning;

// Whether an operation on symmetric matrices, or with a symmetric result, goes by blocks. They
// would not fill a modern device, whose CUBLAS needs none.
inline bool large(int size1, int size2) {
    return size1 > blasTuning.unblocked && size2 > blasTuning.unblocked && !deviceIsModern();
}

}  // namespace lumo
