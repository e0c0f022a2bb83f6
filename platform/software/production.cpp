#include "platform/software/production.h"

#include <algorithm>

#include "platform/software/control.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"

namespace software {

bool isTheMachine() {
    return schedule() == Schedule::production && machine().asFound &&
           !instrumented.load(std::memory_order_relaxed);
}

// Measured. A panel is the caller's own work, while the other threads update what lies beyond the
// next one.
int panelWidth(platform::Panel kind, char type, int m, int n) {
    if (!isTheMachine()) return 0;
    const int order = std::min(m, n);
    switch (kind) {
        case platform::Panel::lu:
            return order < 2048 ? (threads() == 1 ? 96 : 64) : 256;
        case platform::Panel::qr:
            return 64;
        case platform::Panel::bidiagonal:
            return type == 'C' || type == 'Z' ? 24 : 16;
        case platform::Panel::reflectors:  // for few columns their triangular factors are the work
            return n < 16 ? 16 : 64;
        case platform::Panel::cholesky:  // alone, the CPU LAPACK has nothing to wait for
            return threads() == 1 ? order : 128;
    }
    return 0;
}

int sharesMemory() {
    return isTheMachine();
}

}  // namespace software
