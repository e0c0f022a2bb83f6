// What the launcher and the kernel of the unit share.
#pragma once

#include "basic/PermuteRows/shape.h"
#include "common/complex.h"

namespace lumo {

// A lane keeps a row of this many elements, and a block has as many lanes as registers allow.
constexpr int luPanelColumns = 32, luPanelLanes = 256;
static_assert(2 * luPanelColumns <= movedAtOnce);

// A row that could be the next pivot's, numbered as if rows had been exchanged, and whose it is.
template <class R>
struct PivotChoice {
    R size;
    int row, block;
};

// A block's best, with what is left of the row.
template <class T>
struct PivotOffer {
    PivotChoice<RealOf<T>> choice;
    T row[luPanelColumns];
};

}  // namespace lumo
