// Several sweeps of plane rotations in one pass over the matrix (Van Zee, van de Geijn,
// Quintana-Orti, ACM Transactions on Mathematical Software 40, 2014: restructured rotations).
#pragma once

#include <cstddef>

#include "basic/ApplySweeps/shape.h"
#include "common/complex.h"

namespace lumo {

// Each of the m rows of a device matrix is a line of `elements` elements, `step` apart (a negative
// step runs backwards along the columns). Applies stages * sweepsOfStage sweeps to each, one after
// the other, each from the first element on: its rotation of plane p makes of the elements x(p),
// x(p + 1) of a line c x(p) + s x(p + 1), c x(p + 1) - s x(p).
//
// A sweep follows the one before it at the distance of an element: row i of the table, `pitch`
// rotations from row i - 1, is what happens when element i enters, and has at j sweep j's rotation
// of plane i - 1 - j. There are sweepTableRows() rows. Where there is no such plane, or where the
// sweep leaves it alone, stands the identity, which is no product: it keeps infinities.
//
// Nothing is checked; m < 1, elements < 2 and stages < 1 do nothing.
template <class T>
void applySweeps(int m, int elements, int stages, const Rotation<RealOf<T>>* table, int pitch, T* a,
                 std::ptrdiff_t step);

}  // namespace lumo
