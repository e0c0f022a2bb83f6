// What the library knows about itself, for the whole process.
#pragma once

#include "lumo.h"

namespace lumo {

// The last status and its info. Shared by all threads, the last writer wins.
lumoStatus lastStatus();
int info();
// The calling thread's own last status and info, which nobody else overwrites.
lumoStatus threadStatus();
int threadInfo();
// Store both.
void setLastStatus(lumoStatus status);
void setInfo(int info);
// Stores and returns the status of a call that did not come to its body. The shared info stays as
// it was.
lumoStatus refuse(lumoStatus status);

// Whether the device and CUBLAS are ready. The other two are written just before it is set and
// keep their values after a shutdown.
bool initialized();
void setInitialized(bool yes);
// Whether the device computes in double precision: capability 1.3 or higher.
bool doublePrecision();
// The device's capability as major times 10 plus minor, -1 before the first initialisation.
int computeCapability();
// Whether that is 7.0 or more: such a device does so much at a time that what stands between the
// products decides, so it has narrower panels, and algorithms with fewer launches.
inline bool deviceIsModern() {
    return computeCapability() >= 70;
}
void setDeviceAbilities(int capability);

// All of this as it was when the library was loaded.
void resetState();

}  // namespace lumo
