// Bad arguments of every function, alone and in twos, of host and device functions. What a call
// with them must tell, and leave alone, is known to the model that random calls are held against.
#include <random>

#include "fuzz/fuzz.h"
#include "support/machine.h"

namespace test {
namespace {

// By the kind of the function (fuzz/calls_fuzzer.cpp).
class BadArguments : public OnSoftwareDevice, public ::testing::WithParamInterface<int> {};

// Decisions of which none is rare make a mostly good call; one that is makes an argument bad.
TEST_P(BadArguments, AloneAndInTwos) {
    constexpr char rare = 15;
    std::mt19937 engine;
    for (int function = 0; function < 10; ++function)
        for (int round = 0; round < 4; ++round) {
            std::string good(40, '\0');
            for (char& decision : good) decision = char(engine() % 10);
            good[0] = char(GetParam());
            good[1] = char(function);
            good[2] = char(round % 2);
            for (std::size_t i = 3; i < 30; ++i)
                for (std::size_t j = i; j < 30; ++j)
                    for (char other : {rare, 'C', 'T'}) {
                        if (other != rare && j != i + 1) continue;  // a letter, for another one's
                        std::string bad = good;
                        bad[i] = rare;
                        bad[j] = other;
                        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bad.data()),
                                               bad.size());
                    }
        }
}
INSTANTIATE_TEST_SUITE_P(, BadArguments, ::testing::Range(0, 37));

}  // namespace
}  // namespace test
