// The device behind Lumo.
#pragma once

#include <string>

namespace lumo::dropin {

// "software", "cuda", or "none" where Lumo cannot run. Asked once; binds no device.
const std::string& platformName();

// Registers the calling thread with Lumo, on its first call, until it ends. False if Lumo cannot
// run; that is final for the thread. The same once the thread is ending.
bool threadIsReady();

// For the report: the device in use, or why there is none.
std::string deviceText();

}  // namespace lumo::dropin
