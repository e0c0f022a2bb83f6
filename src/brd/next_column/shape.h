// What the launcher and the kernel of nextColumn agree on.
#pragma once

namespace lumo {

// A block's rows of the matrix, and in how many parts it makes their sums.
constexpr int nextColumnRows = 32, nextColumnSplits = 8;
// Columns of a panel: P has twice as many.
constexpr int mostPanelColumns = 128;

}  // namespace lumo
