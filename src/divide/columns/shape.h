// What the launchers and the kernels of columns agree on.
#pragma once

namespace lumo {

constexpr int rotatedRows = 256;

}  // namespace lumo
