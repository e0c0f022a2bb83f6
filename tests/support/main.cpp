// Runs a test program. Numerical tests take the platform that the caller names or the machine
// has; all others play on the software device.
#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
#ifdef LUMO_TEST_ANY_PLATFORM
    setenv("LUMO_CUDA_PLUGIN", LUMO_TEST_PLUGIN, 0);
#else
    setenv("LUMO_PLATFORM", "software", 1);
#endif
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
