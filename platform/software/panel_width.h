// The widths of panels that a CPU wants.
#pragma once

#include <algorithm>

#include "platform/table.h"

namespace software {

// Measured. A panel is the caller's own work, while the other threads update what lies beyond the
// next one.
inline int widthOfPanel(platform::Panel kind, char type, int m, int n, int threads) {
    const int order = std::min(m, n);
    switch (kind) {
        case platform::Panel::lu:
            return order < 2048 ? (threads == 1 ? 96 : 64) : 256;
        case platform::Panel::qr:
            return 64;
        case platform::Panel::bidiagonal:
            return type == 'C' || type == 'Z' ? 24 : 16;
        case platform::Panel::reflectors:  // for few columns their triangular factors are the work
            return n < 16 ? 16 : 64;
        case platform::Panel::cholesky:  // alone, the CPU LAPACK has nothing to wait for
            return threads == 1 ? order : 128;
    }
    return 0;
}

}  // namespace software
