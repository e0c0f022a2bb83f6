#pragma once

namespace lumo {

// The library as it was when it was loaded, for tests that describe another machine.
void resetRuntime();

}  // namespace lumo
