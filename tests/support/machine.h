// Described machines, and the fixture that starts the library on one of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "lumo.h"
#include "platform/cuda3.h"
#include "platform/software/control.h"
#include "runtime/reset.h"

namespace test {

using software::Schedule;

inline software::DeviceDescription device(int capability, std::string name = "Test device",
                                          std::size_t memory = std::size_t(1) << 30) {
    software::DeviceDescription d;
    d.name = std::move(name);
    d.major = capability / 10;
    d.minor = capability % 10;
    d.memory = memory;
    if (capability >= 30) d.maxGrid[0] = 2147483647;
    return d;
}

// What a runtime without a device may show.
inline software::DeviceDescription emulation() {
    auto d = device(20, "Device Emulation");
    d.major = d.minor = 9999;
    return d;
}

// A machine with one device.
inline software::Machine machine(int capability = 20, std::size_t memory = std::size_t(1) << 30) {
    return {{device(capability, "Test device", memory)}, 3020, 3020};
}

// The library as it was at load, on another machine.
inline void startAfresh(const software::Machine& machine, Schedule schedule = Schedule::latest) {
    lumoShutdown();
    lumo::resetRuntime();
    software::start(machine, schedule);
}

// Numerical tests run on whatever platform runs: LUMO_PLATFORM=cuda takes them to a GPU.
inline bool onSoftwareDevice() {
    return std::string(platform::choice().table->name) == "software";
}

// An initialised library: on the software device on a machine of one device, under a strict
// schedule, else on the GPU at hand. On the software device every test ends with no memory in use
// and without a stray access.
class OnMachine : public ::testing::Test {
  protected:
    void start(const software::Machine& m, Schedule schedule = Schedule::latest) {
        startAfresh(m, schedule);
        ASSERT_EQ(lumoNoError, lumoInitialize());
    }
    void SetUp() override { start(machine()); }
    void TearDown() override {
        lumoShutdown();
        if (!onSoftwareDevice()) return;
        software::removeFault();
        const software::Usage left = software::usage();
        EXPECT_EQ(0u, left.deviceBytes) << "device memory leaked";
        EXPECT_EQ(0u, left.pageLockedBytes) << "page-locked memory leaked";
        EXPECT_EQ(0, left.streams) << "a stream leaked";
        EXPECT_EQ(0, left.violations) << "an access outside device memory";
    }
};

// For tests that describe machines, make calls fail or read the trace.
class OnSoftwareDevice : public OnMachine {
  protected:
    void SetUp() override {
        if (!onSoftwareDevice()) GTEST_SKIP() << "this test plays on the software device";
        OnMachine::SetUp();
    }
};

// The same under both strict schedules.
class UnderBothSchedules : public OnSoftwareDevice, public ::testing::WithParamInterface<Schedule> {
  protected:
    void SetUp() override {
        OnSoftwareDevice::SetUp();
        if (!IsSkipped()) start(machine(), GetParam());
    }
};

inline std::string scheduleName(const ::testing::TestParamInfo<Schedule>& info) {
    return info.param == Schedule::earliest ? "earliest" : "latest";
}
#define LUMO_BOTH_SCHEDULES(Fixture)                                                              \
    INSTANTIATE_TEST_SUITE_P(, Fixture,                                                           \
                             ::testing::Values(test::Schedule::earliest, test::Schedule::latest), \
                             test::scheduleName)

// A status and the info that came with it: what a call returned, and what it left.
using Outcome = std::pair<lumoStatus, int>;
inline Outcome outcome(lumoStatus returned) {
    return {returned, lumoGetErrorInfo()};
}

// A call puts this text into a buffer: all of it, or what there is room for, and nothing behind.
template <class Put>
void expectText(const std::string& text, Put put) {
    for (std::size_t size : {text.size() + 1, text.size(), std::size_t(4), std::size_t(1)}) {
        std::vector<char> buffer(size + 1, '#');
        EXPECT_EQ(lumoNoError, put(buffer.data(), int(size)));
        EXPECT_EQ(text.substr(0, size - 1), buffer.data());
        EXPECT_EQ('#', buffer[size]);
    }
}

// The most device memory that f takes beside what is in use before.
template <class F>
std::size_t peakOf(F f) {
    lumoFreeBuffers();
    software::resetPeak();
    const std::size_t before = software::usage().deviceBytes;
    EXPECT_EQ(lumoNoError, f());
    return software::usage().devicePeak - before;
}

// Gives a variable a value while what this returns lives.
template <class V>
std::shared_ptr<void> temporarily(V& variable, const V& value) {
    auto restore = [&variable, saved = variable](void*) { variable = saved; };
    variable = value;
    return std::shared_ptr<void>(nullptr, restore);
}

// Several of these.
using Restored = std::shared_ptr<void>;
inline Restored together(Restored one, Restored other) {
    return std::make_shared<std::pair<Restored, Restored>>(std::move(one), std::move(other));
}

// What the exception that f throws says of itself.
template <class F>
std::string whatOf(F f) {
    try {
        f();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "";
}

// The calls that f makes.
template <class F>
std::vector<software::Call> traceOf(F f) {
    software::startTrace();
    f();
    return software::stopTrace();
}

// A call and its arguments, in words.
inline std::string written(const software::Call& call) {
    std::string words = call.name;
    for (const std::string& argument : call.arguments) words += " " + argument;
    return words;
}

template <class Is>
int countIf(const std::vector<software::Call>& trace, Is is) {
    return int(std::count_if(trace.begin(), trace.end(), is));
}

// How often the trace holds a call of this name, or a launch of a kernel whose instance name
// begins so ("KernelLASWP<").
inline int count(const std::vector<software::Call>& trace, const std::string& name) {
    return countIf(trace, [&](const software::Call& call) {
        const bool launch = call.name == "cudaLaunch" && !call.arguments.empty();
        return call.name == name || (launch && call.arguments[0].rfind(name, 0) == 0);
    });
}

}  // namespace test
