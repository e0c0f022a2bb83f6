// In this copy of Lumo the LUMO_TEST_FAULT-th CUDA or CUBLAS call fails, for the tests of what the
// drop-in library does then.
#include <cstdlib>

#include "platform/software/control.h"

namespace {

[[gnu::constructor]] void injectFault() {
    const char* nth = std::getenv("LUMO_TEST_FAULT");
    if (!nth) return;
    software::start(software::defaultMachine(), software::Schedule::production);
    software::Fault fault;
    fault.nth = std::atoi(nth);
    software::inject(fault);
}

}  // namespace
