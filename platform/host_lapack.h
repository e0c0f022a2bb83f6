// The CPU's part of the hybrid algorithms, as a platform answers for it: the CPU LAPACK by the
// letter of the element type.
#pragma once

#include "platform/table.h"

namespace platform {

// Fills the optional entries that a table leaves null: the CPU LAPACK, and no wishes. Panels are
// factorised on as many threads as the CPU library thinks right, or on the caller's alone.
enum class PanelThreads { ofLibrary, one };
void fillOptional(Table& table, PanelThreads threads);

}  // namespace platform
