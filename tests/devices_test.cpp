#include "runtime/devices.h"

#include <gtest/gtest.h>

#include "runtime/exceptions.h"
#include "support/machine.h"

namespace {

using test::Outcome, test::outcome;

constexpr std::size_t MB = std::size_t(1) << 20, GB = std::size_t(1) << 30;

software::DeviceDescription device(std::string name, std::size_t memory, int multiprocessors = 1,
                                   int clock = 1000000) {
    auto d = test::device(20, std::move(name), memory);
    d.multiprocessors = multiprocessors;
    d.clockRate = clock;
    return d;
}

void on(std::vector<software::DeviceDescription> devices) {
    test::startAfresh({std::move(devices)});
}

TEST(DevicesTest, Best) {
    const struct {
        std::vector<software::DeviceDescription> devices;
        int best;
    } cases[] = {
        {{}, -1},
        {{test::emulation()}, -1},
        {{device("A", GB)}, 0},
        {{device("A", GB), device("B", 2 * GB)}, 1},
        {{device("A", GB), device("B", GB)}, 0},
        // 8 cores x 100 x 1 GHz in kHz is less than a gigabyte, but more than its half.
        {{device("A", GB), device("B", GB, 100)}, 1},
        {{device("A", 2 * GB), device("B", GB, 100)}, 0},
        {{device("A", GB, 2, 1000000), device("B", GB, 1, 2000001)}, 1},
        {{device("GeForce", 4 * GB), device("Tesla C1060", GB)}, 1},
        {{device("Tesla C1060", GB), device("GeForce", 4 * GB)}, 0},
        {{device("Tesla", GB), device("Tesla", GB)}, 0},
        {{device("A", 8 * GB), device("Tesla", GB), device("Tesla", 2 * GB), device("B", 9 * GB)},
         2},
        // Sums beyond 32 bits.
        {{device("A", 3 * GB), device("B", 40 * GB, 1000, 4000000)}, 1},
    };
    for (const auto& c : cases) {
        on(c.devices);
        EXPECT_EQ(c.best, lumo::bestDevice(0.5, 0.5)) << "case " << &c - cases;
    }
}

TEST(DevicesTest, TableIsReadOnceAndAgainAfterAFailure) {
    on({test::device(13, "Tesla T10"), test::device(20)});
    software::inject({2, "cudaGetDeviceProperties", cudaErrorUnknown});
    EXPECT_THROW(lumo::deviceTable(), cudalib::CudaRuntimeException);
    EXPECT_EQ(13, lumo::deviceCapability(0));
    const lumo::Device& first = lumo::deviceTable()[0];
    EXPECT_TRUE(first.tesla && first.major == 1 && first.minor == 3 && first.index == 0);
    software::startTrace();
    EXPECT_EQ(20, lumo::deviceCapability(1));
    EXPECT_EQ(0u, software::stopTrace().size());
}

TEST(DevicesTest, SizeTexts) {
    const struct {
        std::size_t bytes;
        const char* text;
    } cases[] = {
        {0, "0  B"},    {1000, "1000  B"}, {1023, "1023  B"},    {1024, "1 KB"},
        {1536, "2 KB"}, {1 << 20, "1 MB"}, {4294967296, "4 GB"}, {~std::size_t(0), "16 EB"}};
    for (const auto& c : cases) EXPECT_EQ(c.text, lumo::sizeText(c.bytes));
}

TEST(DevicesTest, Info) {
    on({device("Tesla C2050", 3 * GB), device("Small", 512 * MB)});
    char buffer[32];
    const std::string text = "Tesla C2050 (3 GB)";
    for (int size : {32, 19, 18, 5, 1}) {
        std::fill(std::begin(buffer), std::end(buffer), '#');
        EXPECT_EQ(lumoNoError, lumoGetDeviceInfo(0, buffer, size));
        EXPECT_EQ(text.substr(0, std::size_t(size) - 1), buffer);
        if (size < 32) {
            EXPECT_EQ('#', buffer[size]);
        }
    }
    EXPECT_EQ(lumoNoError, lumoGetDeviceInfo(1, buffer, 32));
    EXPECT_STREQ("Small (512 MB)", buffer);
    const struct {
        int device;
        char* buffer;
        int size, info;
    } cases[] = {{2, nullptr, 0, -1}, {-1, buffer, 9, -1}, {0, nullptr, 0, -2}, {0, buffer, 0, -3}};
    for (const auto& c : cases) {
        EXPECT_EQ(Outcome(lumoArgumentError, c.info),
                  outcome(lumoGetDeviceInfo(c.device, c.buffer, c.size)));
    }
}

}  // namespace
