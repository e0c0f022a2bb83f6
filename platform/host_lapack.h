// The CPU's part of the hybrid algorithms, as a platform answers for it: the CPU LAPACK by the
// letter of the element type, on operands in host memory. Each returns LAPACK's info; a `size` of
// -1 asks for the elements of workspace.
#pragma once

#include "platform/table.h"

namespace platform {

// Fills the entries of a table that has none of its own. Panels are factorised on as many threads
// as the CPU library thinks right, or on the caller's alone.
enum class PanelThreads { ofLibrary, one };
void fillPanels(Table& table, PanelThreads threads);

}  // namespace platform
