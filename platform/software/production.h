// What the software device wants where it is the machine that does the work, and no instrument: in
// production, on the machine as it is found, untraced.
#pragma once

#include "platform/table.h"

namespace software {

bool isTheMachine();

// As platform/table.h has them.
int panelWidth(platform::Panel kind, char type, int m, int n);
int sharesMemory();

}  // namespace software
