// Initialisation, thread registration and shutdown on machines of all kinds.
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <thread>

#include "cudalib/workspace_pool.h"
#include "runtime/frame.h"
#include "runtime/threads.h"
#include "support/machine.h"

namespace {

using test::Outcome, test::outcome;

software::Machine versions(int runtime, int driver) {
    software::Machine m = test::machine();
    m.runtimeVersion = runtime;
    m.driverVersion = driver;
    return m;
}

software::Machine machineOf(std::vector<software::DeviceDescription> devices) {
    return {std::move(devices)};
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
        {machineOf({}), lumoNoHardware},
        {machineOf({test::emulation()}), lumoNoHardware},
        {machineOf({test::device(9)}), lumoNoHardware},
        {machineOf({test::device(10)}), lumoNoError},
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
        EXPECT_EQ(capability, lumo::computeCapability());
        EXPECT_EQ(capability >= 13, lumo::doublePrecision());
        lumoShutdown();
        EXPECT_EQ(capability, lumo::computeCapability()) << "kept after a shutdown";
    }
    EXPECT_STREQ("TRUE", std::getenv("KMP_DUPLICATE_LIB_OK"));
}

TEST_F(InitializeTest, SelectedDeviceStays) {
    test::startAfresh(machineOf({test::device(20), test::device(12), test::device(13)}));
    int value = -1;
    EXPECT_EQ(lumoNotInitialized, lumoGetExecutingDevice(&value));
    EXPECT_EQ(lumoNoError, lumoGetDeviceCount(&value));
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
    test::startAfresh(machineOf({test::emulation()}));
    int count = -1;
    char text[8];
    EXPECT_EQ(lumoNoError, lumoGetDeviceCount(&count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(lumoArgumentError, lumoSelectDevice(0));
    EXPECT_EQ(Outcome(lumoArgumentError, -1), outcome(lumoGetDeviceInfo(0, text, 8)));
    EXPECT_EQ(lumoNoError, lumoGetErrorInfoString(lumoNoHardware, 0, text, 8));
    EXPECT_EQ(lumoNotInitialized, lumoGetExecutingDevice(&count));
}

TEST_F(InitializeTest, ShutdownTouchesNeitherStatusNorInfo) {
    test::startAfresh(test::machine());
    lumo::setInfo(42);
    lumo::setLastStatus(lumoDataError);
    lumoShutdown();
    lumoFreeBuffers();
    lumoInitialize();
    lumo::setInfo(42);
    lumo::setLastStatus(lumoDataError);
    lumoFreeBuffers();
    EXPECT_TRUE(lumo::initialized());
    software::startTrace();
    lumoShutdown();
    EXPECT_EQ(1, test::count(software::stopTrace(), "cublasShutdown"));
    EXPECT_EQ(Outcome(lumoDataError, 42), outcome(lumoGetLastStatus()));
    EXPECT_EQ(CUBLAS_STATUS_SUCCESS, cublasGetError());
}

// Another thread, which keeps buffers in its pool between its initialisation and its shutdown.
class Registered {
  public:
    Registered() {
        thread_ = std::thread([this] {
            EXPECT_EQ(lumoNoError, lumoInitialize());
            EXPECT_EQ(lumoNoError, lumoInitialize()) << "twice counts once";
            cudalib::Workspace<char>{1000};
            ready_.set_value();
            leave_.get_future().wait();
            lumoShutdown();
        });
        ready_.get_future().wait();
    }
    void leave() {
        leave_.set_value();
        thread_.join();
    }

  private:
    std::promise<void> ready_, leave_;
    std::thread thread_;
};

TEST_F(InitializeTest, TheLastThreadEndsIt) {
    test::startAfresh(test::machine());
    Registered other;
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
    other.leave();
    EXPECT_FALSE(lumo::initialized());
    EXPECT_EQ(0u, software::usage().deviceBytes) << "those of a thread that never registered, too";
}

}  // namespace
