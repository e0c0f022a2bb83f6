// Status texts, the translation of exceptions, and the frame that every compute function runs in.
#include <climits>
#include <functional>
#include <string>
#include <vector>

#include "runtime/frame.h"
#include "support/machine.h"

namespace {

using lumo::HookPoint;
using test::Outcome, test::outcome;

struct StatusTest : test::OnSoftwareDevice {};

TEST_F(StatusTest, Texts) {
    const std::string texts[] = {
        "No errors",
        "LUMO is not initialized",
        "No hardware is present to run LUMO",
        "CUDA runtime or driver is not supported",
        "Hardware does not have the required compute capability for this problem",
        "Insufficient memory to complete this operation",
        "A required feature is not yet implemented",
        "Argument error; see lumoGetErrorInfo for error code",
        "Data error; see lumoGetErrorInfo for error code",
        "Blas error, see lumoGetErrorInfo for error code",
        "Runtime error, see lumoGetErrorInfo for error code",
        "Invalid lumoStatus",
    };
    for (int s = 0; s < 12; ++s) EXPECT_EQ(texts[s], lumoGetStatusString(lumoStatus(s)));
    EXPECT_EQ(texts[11], lumoGetStatusString(lumoStatus(-1)));

    const std::string manual = " (see the LUMO Reference Manual for more information)";
    const std::string cuda = "CUDA Error: ", guide = " (see Programmer's Guide)";
    const struct {
        lumoStatus status;
        int info;
        std::string text;
    } cases[] = {
        {lumoArgumentError, -3, "Argument 3 is invalid" + manual},
        {lumoArgumentError, 3, "Argument 3 is invalid" + manual},
        {lumoArgumentError, INT_MIN, "Argument 2147483648 is invalid" + manual},
        {lumoDataError, 17, "Data error at pos 17" + manual},
        {lumoBlasError, 0,
         "CUBLAS error: call cudaGetErrorInfo() to determine this error with specificity"},
        {lumoBlasError, 1, "CUBLAS error: not initialized"},
        {lumoBlasError, -3, "CUBLAS error: allocation failure"},
        {lumoBlasError, 7, "CUBLAS error: Invalid argument value"},
        {lumoBlasError, 8, "CUBLAS error: architecture mismatch"},
        {lumoBlasError, 11, "CUBLAS error: mapping error"},
        {lumoBlasError, 13, "CUBLAS error: execution failed"},
        {lumoBlasError, 14, "CUBLAS error: internal error"},
        {lumoBlasError, 2, "CUBLAS error: unknown"},
        {lumoRuntimeError, 2, cuda + cudaGetErrorString(2) + guide},
        {lumoRuntimeError, -36, cuda + cudaGetErrorString(36) + guide},
        {lumoRuntimeError, INT_MIN, cuda + cudaGetErrorString(INT_MIN) + guide},
        {lumoInsufficientMemory, 5, texts[5]},
    };
    lumoShutdown();  // needs no initialised library
    for (const auto& c : cases)
        test::expectText(c.text, [&](char* buffer, int size) {
            return lumoGetErrorInfoString(c.status, c.info, buffer, size);
        });
}

TEST_F(StatusTest, ExceptionsBecomeStatuses) {
    using namespace lumo;
    const struct {
        std::function<void()> body;
        lumoStatus status;
        int info;
    } cases[] = {
        {[] {}, lumoNoError, 0},
        {[] { throw cudalib::CudaMemoryException("full"); }, lumoInsufficientMemory, 0},
        {[] { throw std::bad_alloc(); }, lumoInsufficientMemory, 0},
        {[] { throw cudalib::CudaRuntimeException(4); }, lumoRuntimeError, 4},
        {[] { throw cudalib::CublasException(13); }, lumoBlasError, 13},
        {[] { throw InfoException(5, lumoInsufficientComputeCapability); },
         lumoInsufficientComputeCapability, 5},
        {[] { throwArgumentError(-5); }, lumoArgumentError, -5},
        {[] { throwDataError(7); }, lumoDataError, 7},
        {[] { throwLapackInfo(-2); }, lumoArgumentError, -2},
        {[] { throwLapackInfo(0); }, lumoArgumentError, 0},
        {[] { throwLapackInfo(1); }, lumoDataError, 1},
        {[] { throwFeatureNotImplemented(); }, lumoFeatureNotImplemented, 0},
        {[] { throw std::runtime_error("unknown"); }, lumoRuntimeError, -1},
        {[] { throw 42; }, lumoRuntimeError, -1},
        {[] { checkReturnedInfo(0); }, lumoNoError, 0},
        {[] { checkReturnedInfo(3); }, lumoDataError, 3},
        {[] { checkReturnedInfo(-3); }, lumoRuntimeError, -3},
        {[] { cudalib::checkCudaError(0); }, lumoNoError, 0},
        {[] { cudalib::checkCudaError(2); }, lumoInsufficientMemory, 0},
        {[] { cudalib::checkCudaError(32); }, lumoInsufficientMemory, 0},
        {[] { cudalib::checkCudaError(11); }, lumoRuntimeError, 11},
        {[] { cudalib::checkCublasError(0); }, lumoNoError, 0},
        {[] { cudalib::checkCublasError(3); }, lumoInsufficientMemory, 0},
        {[] { cudalib::checkCublasError(14); }, lumoBlasError, 14},
    };
    for (const auto& c : cases) {
        lumo::setInfo(0);
        EXPECT_EQ(Outcome(c.status, c.info), outcome(lumo::guarded(c.body)))
            << "case " << &c - cases;
    }
    EXPECT_EQ(cudaGetErrorString(2), test::whatOf([] { cudalib::checkCudaError(2); }));
    EXPECT_EQ("CUBLAS Allocation Failure", test::whatOf([] { cudalib::checkCublasError(3); }));
}

TEST_F(StatusTest, SynchronisationRaisesCublasBeforeCuda) {
    auto fail = [] {
        cudaSetDevice(99);
        cublasSgemm('?', 'N', 1, 1, 1, 1, nullptr, 1, nullptr, 1, 0, nullptr, 1);
    };
    fail();
    EXPECT_EQ(Outcome(lumoBlasError, CUBLAS_STATUS_INVALID_VALUE),
              outcome(lumo::guarded(cudalib::synchronizeAndCheck)));
    EXPECT_EQ(lumoNoError, lumo::guarded(cudalib::synchronizeAndCheck)) << "both were drained";
    software::inject({1, "cudaThreadSynchronize", cudaErrorLaunchFailure});
    EXPECT_EQ(Outcome(lumoRuntimeError, cudaErrorLaunchFailure),
              outcome(lumo::guarded(cudalib::synchronizeAndCheck)));
    fail();
    EXPECT_EQ(lumoRuntimeError, lumo::guarded([] { throw 1; }));
    EXPECT_EQ(0, cublasGetError() + cudaGetLastError());
}

// --- The frame -----------------------------------------------------------------------------

constexpr auto hostBegin = HookPoint::hostCallBegin, hostEnd = HookPoint::hostCallEnd,
               deviceBegin = HookPoint::deviceCallBegin, deviceEnd = HookPoint::deviceCallEnd;

class FrameTest : public test::OnSoftwareDevice {
  protected:
    using Points = std::vector<HookPoint>;

    void SetUp() override {
        OnSoftwareDevice::SetUp();
        for (auto point : {hostBegin, hostEnd, deviceBegin, deviceEnd}) record(point);
    }
    void record(HookPoint point) {
        lumo::setHook(point, [this, point] { events.push_back(point); });
    }
    // A call and what came of it; its hooks.
    Outcome solve(float a, int lda = 1) {
        events.clear();
        matrix = a;
        return outcome(lumoSgesv(1, 1, &matrix, lda, &pivot, &solution, 1));
    }
    template <class T>
    Outcome frame(const lumo::CallHooks& hooks) {
        lumo::setInfo(77);
        return outcome(lumo::computeFrame<T>(hooks, [this] { ++ran; }));
    }

    Points events;
    const Points all{hostBegin, deviceBegin, deviceEnd, hostEnd};
    float matrix = 0, solution = 1;
    int pivot = 0, ran = 0;
};

TEST_F(FrameTest, UninitialisedOrImpreciseCallsLeaveInfoAlone) {
    const Outcome imprecise{lumoInsufficientComputeCapability, 77}, down{lumoNotInitialized, 77},
        good{lumoNoError, 0};
    start(test::machine(12));
    EXPECT_EQ(imprecise, frame<lumo::Complex<double>>(lumo::deviceCall));
    EXPECT_EQ(imprecise, frame<double>(lumo::hostCall));
    EXPECT_EQ(imprecise, outcome(lumoGetLastStatus()));
    EXPECT_EQ(0, ran);
    EXPECT_EQ(good, frame<lumo::Complex<float>>(lumo::hostCall));
    start(test::machine(13));
    EXPECT_EQ(good, frame<double>(lumo::hostCall));
    lumoShutdown();
    EXPECT_EQ(down, frame<double>(lumo::hostCall));
    EXPECT_EQ(down, solve(2));
    EXPECT_EQ(down, outcome(lumoGetLastStatus()));
    EXPECT_EQ(2, ran);
}

TEST_F(FrameTest, HooksStandAroundTheCall) {
    EXPECT_EQ(Outcome(lumoNoError, 0), solve(2));
    EXPECT_EQ(0.5f, solution);
    EXPECT_EQ(all, events);
    EXPECT_EQ(Outcome(lumoDataError, 1), solve(0));
    EXPECT_EQ(all, events) << "after a failure, too";
    EXPECT_EQ(Outcome(lumoArgumentError, -4), solve(2, 0));
    EXPECT_EQ((Points{hostBegin, hostEnd}), events);
}

TEST_F(FrameTest, FailingHooks) {
    auto fail = [] { throw cudalib::CudaRuntimeException(30); };
    const Outcome failed{lumoRuntimeError, 30};
    lumo::setHook(hostBegin, fail);
    EXPECT_EQ(failed, solve(2));
    EXPECT_EQ(Points{hostEnd}, events);
    EXPECT_EQ(2, matrix) << "the call itself did not run";

    record(hostBegin);
    lumo::setHook(deviceBegin, fail);
    EXPECT_EQ(failed, solve(2));
    EXPECT_EQ((Points{hostBegin, deviceEnd, hostEnd}), events);

    record(deviceBegin);
    for (auto end : {deviceEnd, hostEnd}) {
        lumo::setHook(end, fail);
        EXPECT_EQ(failed, solve(2));
        EXPECT_EQ(Outcome(lumoDataError, 1), solve(0)) << "the call's own failure counts";
        lumo::setHook(end, {});
    }
}

TEST_F(FrameTest, HooksMayCallTheLibrary) {
    auto call = [] {
        int count = 0;
        EXPECT_EQ(lumoArgumentError, lumoGetDeviceCount(nullptr));
        EXPECT_EQ(lumoNoError, lumoGetDeviceCount(&count));
        lumoFreeBuffers();
    };
    lumo::setHook(hostEnd, call);
    lumo::setHook(deviceBegin, call);
    EXPECT_EQ(Outcome(lumoDataError, 1), solve(0));
    EXPECT_EQ(lumoDataError, lumoGetLastStatus());
    lumo::setHook(hostEnd, [] { lumoGetDeviceCount(nullptr); });
    EXPECT_EQ(Outcome(lumoNoError, 0), solve(2)) << "success has no info, whatever a hook did";
}

}  // namespace
