#include "support/harness.h"

#include <algorithm>
#include <map>

#include "common/state.h"

namespace test {
namespace {

std::vector<Routine>& routines() {
    static std::vector<Routine> all;
    return all;
}

struct Setting {
    int capability;  // 0: this machine as it is found
    Schedule schedule;

    software::Machine machine() const {
        return capability ? test::machine(capability) : software::defaultMachine();
    }
    std::string name() const {
        return "capability " + std::to_string(capability) + ", schedule " +
               std::to_string(int(schedule));
    }
};

// Early devices have other block sizes and pitches; an early one without double precision runs
// single precision all the same.
constexpr Setting settings[] = {{12, Schedule::latest}, {13, Schedule::earliest},
                                {20, Schedule::latest}, {20, Schedule::earliest},
                                {90, Schedule::latest}, {0, Schedule::production}};

class RoutineTest : public OnMachine, public ::testing::WithParamInterface<std::size_t> {
  protected:
    const Routine& routine() const { return routines()[GetParam()]; }

    void expectEmptyDevice(std::size_t before, const std::string& what) {
        if (!onSoftwareDevice()) return;
        lumoFreeBuffers();
        const software::Usage left = software::usage();
        EXPECT_EQ(before, left.deviceBytes) << what << ": device memory leaked";
        EXPECT_EQ(0u, left.pageLockedBytes) << what << ": page-locked memory leaked";
        EXPECT_EQ(0, left.streams) << what << ": a stream leaked";
    }
};

TEST_P(RoutineTest, RightResults) {
    for (const Setting& setting : settings) {
        if (!onSoftwareDevice() && &setting != settings) break;  // a GPU is one machine
        start(setting.machine(), setting.schedule);
        for (const GoodCase& c : routine().good) {
            SCOPED_TRACE(c.name + ", " + setting.name());
            auto call = c.make();
            if (routine().doublePrecision && !lumo::doublePrecision()) {
                ASSERT_EQ(lumoInsufficientComputeCapability, call->run());
                ASSERT_TRUE(call->untouched());
                continue;
            }
            ASSERT_EQ(lumoNoError, call->run()) << "info " << lumoGetErrorInfo();
            EXPECT_EQ(Outcome(lumoNoError, 0), outcome(lumoGetLastStatus()));
            call->checkResult();
            call.reset();
            expectEmptyDevice(0, c.name);
        }
    }
}

TEST_P(RoutineTest, FailingData) {
    for (const Setting& setting : settings) {
        if (setting.capability == 12 || setting.capability == 13) continue;
        start(setting.machine(), setting.schedule);
        if (!routine().failing) continue;
        SCOPED_TRACE(setting.name());
        const auto shrunk = routine().shrinkBlocks();
        routine().failing();
        expectEmptyDevice(0, setting.name());
    }
}

TEST_P(RoutineTest, NotInitialized) {
    lumoGetErrorInfoString(lumoStatus(12), 0, nullptr, 0);  // leaves info -1
    for (const GoodCase& c : routine().sweep) {
        auto call = c.make();
        lumoShutdown();
        EXPECT_EQ(lumoNotInitialized, call->run()) << c.name;
        EXPECT_TRUE(call->untouched()) << c.name;
        call.reset();
        ASSERT_EQ(lumoNoError, lumoInitialize());
    }
}

// Skips a test that makes calls fail where the platform is not the software device.
#define LUMO_NEEDS_FAULTS() \
    if (!onSoftwareDevice()) GTEST_SKIP() << "faults are injected on the software device"

// --- The fault sweep ----------------------------------------------------------------------

bool reads(const std::string& name) {
    return name == "cudaGetLastError" || name == "cublasGetError";
}

// What failing each CUDA call of one run must lead to.
struct Expectation {
    std::string name;
    lumoStatus status;
    int info;
    bool beforeWork;  // the operands are still being set up
};

std::vector<Expectation> expectations(const std::vector<software::Call>& trace,
                                      const software::Fault& fault) {
    std::size_t lastCheck = 0, firstWork = trace.size();
    for (std::size_t i = 0; i < trace.size(); ++i) {
        const std::string& name = trace[i].name;
        if (name == "cudaGetLastError") lastCheck = i;
        const bool toHost = name.rfind("cudaMemcpy", 0) == 0 && trace[i].arguments.back() == "2";
        const bool work = name == "cudaMallocHost" || name == "cudaConfigureCall" ||
                          name == "cudaStreamCreate" || toHost ||
                          (name.rfind("cublas", 0) == 0 && !reads(name));
        if (work) firstWork = std::min(firstWork, i);
    }
    std::vector<Expectation> all;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        const std::string& name = trace[i].name;
        if (reads(name)) continue;
        Expectation e{name, lumoRuntimeError, fault.cudaError, i < firstWork};
        if (name.rfind("cublas", 0) == 0) {
            e.status = lumoBlasError;
            e.info = fault.cublasError;
        }
        // Failures to release, and of the downloads after the last check, are swallowed.
        if (name == "cudaFree" || name == "cudaFreeHost" || i > lastCheck) {
            e.status = lumoNoError;
            e.info = 0;
        }
        all.push_back(std::move(e));
    }
    return all;
}

TEST_P(RoutineTest, EveryCudaCallMayFail) {
    LUMO_NEEDS_FAULTS();
    const auto shrunk = routine().shrinkBlocks();
    for (int i = 0; i < 2 * int(routine().sweep.size()); ++i) {
        const GoodCase& c = routine().sweep[std::size_t(i / 2)];
        start(machine(i % 2 ? 20 : 90));
        SCOPED_TRACE(c.name + (i % 2 ? "" : ", modern"));
        software::Fault fault;
        auto measured = c.make();
        lumoFreeBuffers();
        software::startTrace();
        ASSERT_EQ(lumoNoError, measured->run());
        const auto expected = expectations(software::stopTrace(), fault);
        measured.reset();
        ASSERT_LT(expected.size(), 600u) << "too long for a sweep";

        for (std::size_t nth = 1; nth <= expected.size(); ++nth) {
            const Expectation& e = expected[nth - 1];
            const std::string what = "call " + std::to_string(nth) + ", " + e.name;
            auto call = c.make();
            lumoFreeBuffers();
            const std::size_t before = software::usage().deviceBytes;
            fault.nth = int(nth);
            software::inject(fault);
            const lumoStatus status = call->run();
            ASSERT_EQ(e.name, software::removeFault()) << what;
            ASSERT_EQ(e.status, status) << what;
            EXPECT_EQ(e.info, lumoGetErrorInfo()) << what;
            EXPECT_EQ(cudaSuccess, cudaGetLastError()) << what << " left an error behind";
            EXPECT_EQ(0, cublasGetError()) << what << " left an error behind";
            EXPECT_TRUE(!e.beforeWork || call->untouched()) << what;
            expectEmptyDevice(before, what);
            call.reset();

            auto next = c.make();
            ASSERT_EQ(lumoNoError, next->run()) << "after " << what;
            next->checkResult();
        }
    }
}

// No memory at each allocation in turn, and at all of them: status 5, and the operands as they
// were. With idle buffers in the pool an allocation is tried once more.
TEST_P(RoutineTest, MemoryMayRunOut) {
    LUMO_NEEDS_FAULTS();
    const auto shrunk = routine().shrinkBlocks();
    for (const GoodCase& c : routine().sweep) {
        SCOPED_TRACE(c.name);
        for (const char* function : {"cudaMalloc", "cudaMallocHost"}) {
            for (int nth = 1;; ++nth) {
                auto call = c.make();
                lumoFreeBuffers();
                const std::size_t before = software::usage().deviceBytes;
                software::inject({nth, function, cudaErrorMemoryAllocation, 3});
                const lumoStatus status = call->run();
                if (software::removeFault().empty()) break;
                EXPECT_EQ(0, lumoGetErrorInfo());
                if (routine().phases && status == lumoNoError) {
                    call->checkResult();
                } else {
                    EXPECT_EQ(lumoInsufficientMemory, status) << function << " " << nth;
                    EXPECT_TRUE(routine().phases || call->untouched()) << function << " " << nth;
                }
                expectEmptyDevice(before, function);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, RoutineTest, ::testing::Range(std::size_t(0), routines().size()),
                         [](const auto& info) { return routines()[info.param].name; });

}  // namespace

void registerRoutine(Routine routine) {
    routines().push_back(std::move(routine));
}

}  // namespace test
