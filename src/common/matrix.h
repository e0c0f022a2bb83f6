// Column-major matrices.
#pragma once

#include "platform/matrix.h"

namespace lumo {

using platform::at;
using platform::MatrixView;

}  // namespace lumo
