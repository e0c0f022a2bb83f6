#include "platform/software/production.h"

#include "platform/software/control.h"
#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/panel_width.h"

namespace software {

bool isTheMachine() {
    return schedule() == Schedule::production && machine().asFound &&
           !instrumented.load(std::memory_order_relaxed);
}

int panelWidth(platform::Panel kind, char type, int m, int n) {
    return isTheMachine() ? widthOfPanel(kind, type, m, n, threads()) : 0;
}

int sharesMemory() {
    return isTheMachine();
}

}  // namespace software
