// Which rows of a column belong to a part of a matrix; the diagonal belongs to both triangles.
#pragma once

#include "cudalib/block.h"

namespace lumo {

enum class Part { whole, upper, lower };

template <Part part>
LUMO_DEVICE int firstRow(int j) {
    return part == Part::lower ? j : 0;
}

// One past the last row, of m.
template <Part part>
LUMO_DEVICE int endRow(int j, int m) {
    return part == Part::upper && j < m ? j + 1 : m;
}

}  // namespace lumo
