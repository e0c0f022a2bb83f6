// What the library knows about itself, for the whole process.
#pragma once

#include "lumo.h"

namespace lumo {

// The last status and its info. Shared by all threads, the last writer wins.
lumoStatus lastStatus();
void setLastStatus(lumoStatus status);
int info();
void setInfo(int info);

// Whether the device and CUBLAS are ready. The other two are written just before it is set and
// keep their values after a shutdown.
bool initialized();
void setInitialized(bool yes);
// Whether the device computes in double precision: capability 1.3 or higher.
bool doublePrecision();
// The device's capability as major times 10 plus minor, -1 before the first initialisation.
int computeCapability();
void setDeviceAbilities(int capability);

// Everything as it was when the library was loaded, for tests that describe another machine.
void resetRuntime();

}  // namespace lumo
