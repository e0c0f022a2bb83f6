// What the launcher and the kernel of bisection agree on.
#pragma once

#include "trd/bisection/bisection.h"

namespace lumo {

// A block has one value or more.
constexpr int bisectionLanes = mostCandidates;

}  // namespace lumo
