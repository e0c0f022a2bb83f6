// What the launcher and the kernel of gemvt agree on.
#pragma once

namespace lumo {

// A block's threads, in rows; it makes as many elements of y as a row has threads.
constexpr int gemvtWidth = 32, gemvtRows = 16;
// How many elements of x it takes at a time.
constexpr int gemvtChunk = gemvtWidth * gemvtRows;

}  // namespace lumo
