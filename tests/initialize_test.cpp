// Initialisation, thread registration and shutdown on machines of all kinds; their devices.
#include <cstdlib>
#include <future>
#include <thread>

#include "common/threads.h"
#include "cudalib/workspace_pool.h"
#include "runtime/devices.h"
#include "runtime/frame.h"
#include "support/machine.h"

namespace {

using test::Outcome, test::outcome;

constexpr std::size_t MB = std::size_t(1) << 20, GB = std::size_t(1) << 30;

software::Machine versions(int runtime, int driver) {
    return {{test::device(20)}, runtime, driver};
}

software::DeviceDescription device(std::string name, std::size_t memory, int multiprocessors = 1,
                                   int clock = 1000000) {
    auto d = test::device(20, std::move(name), memory);
    d.multiprocessors = multiprocessors;
    d.clockRate = clock;
    return d;
}

struct InitializeTest : ::testing::Test {
    ~InitializeTest() override { lumoShutdown(); }
};

TEST_F(InitializeTest, Machines) {
    const struct {
        software::Machine machine;
        lumoStatus status;
    } cases[] = {
        {versions(3020, 3020), lumoNoError},
        {versions(3020, 3200), lumoNoError},
        {versions(3019, 3020), lumoInsufficientRuntime},
        {versions(3020, 3019), lumoInsufficientRuntime},
        {versions(3020, 3010), lumoInsufficientRuntime},
        {versions(3020, 3000), lumoInsufficientRuntime},
        {versions(4000, 3020), lumoInsufficientRuntime},
        {versions(3020, 0), lumoInsufficientRuntime},
        {{}, lumoNoHardware},
        {{{test::emulation()}}, lumoNoHardware},
        {test::machine(9), lumoNoHardware},
        {test::machine(10), lumoNoError},
    };
    for (const auto& c : cases) {
        test::startAfresh(c.machine);
        lumo::setInfo(5);
        EXPECT_EQ(Outcome(c.status, 0), outcome(lumoInitialize())) << "case " << &c - cases;
        EXPECT_EQ(c.status, lumoGetLastStatus());
        EXPECT_EQ(c.status == lumoNoError, lumo::initialized());
        EXPECT_EQ(1u, lumo::registeredThreads()) << "in any case";
        EXPECT_EQ(cudaSuccess, cudaGetLastError());
    }
}

TEST_F(InitializeTest, Failures) {
    const struct {
        software::Fault fault;
        lumoStatus status;
        int info;
        bool up;  // whether the library is initialised nevertheless
    } cases[] = {
        {{1, "cudaRuntimeGetVersion", 30}, lumoRuntimeError, 30, false},
        {{1, "cudaRuntimeGetVersion", 2}, lumoInsufficientMemory, 0, false},
        {{1, "cudaDriverGetVersion", 32}, lumoInsufficientMemory, 0, false},
        {{1, "cudaGetDeviceCount", 35}, lumoRuntimeError, 35, false},
        {{1, "cudaGetDeviceCount", 38}, lumoNoHardware, 0, false},
        {{1, "cudaGetDeviceProperties", 10}, lumoRuntimeError, 10, false},
        {{2, "cudaGetDeviceProperties", 3}, lumoRuntimeError, 3, false},
        {{1, "cudaSetDevice", 10}, lumoRuntimeError, 10, false},
        {{1, "cudaSetDevice", 2}, lumoRuntimeError, 2, false},
        {{1, "cudaSetDevice", 36}, lumoNoError, 0, true},
        {{1, "cublasInit", 0, 3}, lumoInsufficientMemory, 0, false},
        {{1, "cublasInit", 0, 1}, lumoNoError, 0, true},
        {{1, "cudaGetDevice", 38}, lumoRuntimeError, 38, false},
        // Found by the last check, when the library is up.
        {{1, "cudaThreadSynchronize", 4}, lumoRuntimeError, 4, true},
        {{1, "cublasGetError", 0, 13}, lumoBlasError, 13, true},
        {{1, "cublasGetError", 0, 3}, lumoInsufficientMemory, 0, true},
        {{1, "cudaGetLastError", 17}, lumoRuntimeError, 17, true},
    };
    for (const auto& c : cases) {
        test::startAfresh(test::machine());
        software::inject(c.fault);
        EXPECT_EQ(Outcome(c.status, c.info), outcome(lumoInitialize())) << c.fault.name;
        EXPECT_EQ(c.up, lumo::initialized()) << c.fault.name;
        EXPECT_EQ(c.fault.name, software::removeFault());
        EXPECT_EQ(lumoNoError, lumoInitialize()) << "once more after " << c.fault.name;
        lumoShutdown();
        EXPECT_FALSE(lumo::initialized()) << "the thread was counted once";
    }
    // What was decided before the last check is not overwritten by it.
    test::startAfresh(versions(3020, 3000));
    software::inject({1, "cudaThreadSynchronize", 4});
    EXPECT_EQ(Outcome(lumoInsufficientRuntime, 0), outcome(lumoInitialize()));
    EXPECT_EQ(cudaSuccess, cudaGetLastError());
}

TEST_F(InitializeTest, AbilitiesOfTheDevice) {
    test::startAfresh(test::machine());
    EXPECT_EQ(-1, lumo::computeCapability());
    setenv("KMP_DUPLICATE_LIB_OK", "FALSE", 1);
    for (int capability : {10, 12, 13, 20, 35}) {
        test::startAfresh(test::machine(capability));
        ASSERT_EQ(lumoNoError, lumoInitialize());
        EXPECT_EQ(capability >= 13, lumo::doublePrecision());
        lumoShutdown();
        EXPECT_EQ(capability, lumo::computeCapability()) << "kept after a shutdown";
    }
    EXPECT_STREQ("TRUE", std::getenv("KMP_DUPLICATE_LIB_OK"));
}

TEST_F(InitializeTest, SelectedDeviceStays) {
    test::startAfresh({{test::device(20), test::device(12), test::device(13)}});
    int value = -1;
    EXPECT_EQ(lumoNoError, lumoSelectDevice(1));
    EXPECT_EQ(lumoNoError, lumoInitialize());
    EXPECT_EQ(12, lumo::computeCapability());
    EXPECT_FALSE(lumo::doublePrecision());
    EXPECT_EQ(lumoNoError, lumoGetExecutingDevice(&value));
    EXPECT_EQ(1, value);
    EXPECT_EQ(Outcome(lumoRuntimeError, cudaErrorSetOnActiveProcess), outcome(lumoSelectDevice(2)))
        << "too late for another";
    software::inject({1, "cudaSetDevice", cudaErrorMemoryAllocation});
    EXPECT_EQ(lumoRuntimeError, lumoSelectDevice(2)) << "whatever the error";
    EXPECT_EQ(Outcome(lumoArgumentError, -1), outcome(lumoGetExecutingDevice(nullptr)));
}

TEST_F(InitializeTest, QueriesWorkWithoutADevice) {
    test::startAfresh({{test::emulation()}});
    int count = -1;
    EXPECT_EQ(lumoNoError, lumoGetDeviceCount(&count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(Outcome(lumoArgumentError, -1), outcome(lumoSelectDevice(0)));
    EXPECT_EQ(lumoNotInitialized, lumoGetExecutingDevice(&count));
}

TEST_F(InitializeTest, ShutdownTouchesNeitherStatusNorInfo) {
    test::startAfresh(test::machine());
    for (bool up : {false, true}) {
        if (up) lumoInitialize();
        lumo::setInfo(42);
        lumo::setLastStatus(lumoDataError);
        lumoFreeBuffers();
        EXPECT_EQ(up, lumo::initialized());
        EXPECT_EQ(up, test::count(test::traceOf(lumoShutdown), "cublasShutdown"));
        EXPECT_EQ(Outcome(lumoDataError, 42), outcome(lumoGetLastStatus()));
    }
    EXPECT_EQ(CUBLAS_STATUS_SUCCESS, cublasGetError());
}

// The other thread keeps buffers in its pool between its initialisation and its shutdown.
TEST_F(InitializeTest, TheLastThreadEndsIt) {
    test::startAfresh(test::machine());
    std::promise<void> ready, leave;
    std::thread other([&] {
        EXPECT_EQ(lumoNoError, lumoInitialize());
        EXPECT_EQ(lumoNoError, lumoInitialize()) << "twice counts once";
        { const cudalib::Workspace<char> leavesABuffer(1000); }
        ready.set_value();
        leave.get_future().wait();
        lumoShutdown();
    });
    ready.get_future().wait();
    ASSERT_EQ(lumoNoError, lumoInitialize());
    { cudalib::Workspace<char> mine(1000); }
    const std::size_t both = software::usage().deviceBytes;
    int hookRuns = 0;
    lumo::setHook(lumo::HookPoint::hostCallBegin, [&] { ++hookRuns; });

    // A thread that never registered changes nothing but the hooks and its own buffers.
    std::thread([] { lumoShutdown(); }).join();
    EXPECT_TRUE(lumo::initialized());
    EXPECT_EQ(both, software::usage().deviceBytes);
    lumo::runHook(lumo::HookPoint::hostCallBegin);
    EXPECT_EQ(0, hookRuns);

    lumoShutdown();
    EXPECT_TRUE(lumo::initialized());
    EXPECT_EQ(both / 2, software::usage().deviceBytes) << "this thread's buffers are freed";
    EXPECT_EQ(1u, lumo::registeredThreads());
    std::thread([] { cudalib::Workspace<char>{1000}; }).join();
    EXPECT_EQ(both, software::usage().deviceBytes);
    leave.set_value();
    other.join();
    EXPECT_FALSE(lumo::initialized());
    EXPECT_EQ(0u, software::usage().deviceBytes) << "those of a thread that never registered, too";
}

// --- The choice of a device ------------------------------------------------------------------

TEST(Devices, Best) {
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
        test::startAfresh({c.devices});
        EXPECT_EQ(c.best, lumo::bestDevice(0.5, 0.5)) << "case " << &c - cases;
    }
}

TEST(Devices, TableIsReadOnceAndAgainAfterAFailure) {
    test::startAfresh({{test::device(13, "Tesla T10"), test::device(20)}});
    software::inject({2, "cudaGetDeviceProperties", cudaErrorUnknown});
    EXPECT_THROW(lumo::deviceTable(), cudalib::CudaRuntimeException);
    EXPECT_EQ(13, lumo::deviceCapability(0));
    const lumo::Device& first = lumo::deviceTable()[0];
    EXPECT_TRUE(first.tesla && first.major == 1 && first.minor == 3 && first.index == 0);
    EXPECT_TRUE(test::traceOf([] { EXPECT_EQ(20, lumo::deviceCapability(1)); }).empty());
}

TEST(Devices, SizeTexts) {
    for (auto [bytes, text] : {std::pair{std::size_t(0), "0  B"},
                               {1000, "1000  B"},
                               {1023, "1023  B"},
                               {1024, "1 KB"},
                               {1536, "2 KB"},
                               {MB, "1 MB"},
                               {4 * GB, "4 GB"},
                               {~std::size_t(0), "16 EB"}})
        EXPECT_EQ(text, lumo::sizeText(bytes));
}

TEST(Devices, Info) {
    test::startAfresh({{device("Tesla C2050", 3 * GB), device("Small", 512 * MB)}});
    for (auto [index, text] : {std::pair{0, "Tesla C2050 (3 GB)"}, {1, "Small (512 MB)"}})
        test::expectText(text, [i = index](char* buffer, int size) {
            return lumoGetDeviceInfo(i, buffer, size);
        });
}

}  // namespace
