// The instrument that all other tests play on: what strict mode catches, when operations run,
// and how the software device fails.
#include <cmath>
#include <cstring>
#include <vector>

#include "cudalib/Algorithm/Memset.h"
#include "cudalib/launch.h"
#include "support/machine.h"

#ifndef __SANITIZE_ADDRESS__
#include <sys/mman.h>
#endif

template <class Map, class T>
void CudaMemsetTypeKernel(T* ptr, T value, std::size_t n);

namespace {

using software::Schedule;

// Blocks of memory that a test need not free.
template <class Machine>
class WithBlocks : public Machine {
  protected:
    void TearDown() override {
        for (void* p : device_) cudaFree(p);
        for (void* p : pageLocked_) cudaFreeHost(p);
        cudaGetLastError();
        Machine::TearDown();
    }
    template <class T>
    T* onDevice(std::size_t count) {
        EXPECT_EQ(cudaSuccess, cudaMalloc(&device_.emplace_back(), count * sizeof(T)));
        return static_cast<T*>(device_.back());
    }
    template <class T>
    T* pageLocked(std::size_t count) {
        EXPECT_EQ(cudaSuccess, cudaMallocHost(&pageLocked_.emplace_back(), count * sizeof(T)));
        return static_cast<T*>(pageLocked_.back());
    }

  private:
    std::vector<void*> device_, pageLocked_;
};

using Calls = std::vector<std::function<void()>>;

float firstOf(const float* device) {
    float value = 0;
    EXPECT_EQ(cudaSuccess, cudaMemcpy(&value, device, sizeof value, cudaMemcpyDeviceToHost));
    return value;
}

void gemm(int m, int n, int k, const float* a, int lda, const float* b, int ldb, float* c,
          int ldc) {
    cublasSgemm('N', 'N', m, n, k, 1, a, lda, b, ldb, 0, c, ldc);
}

class StrictMode : public WithBlocks<test::OnSoftwareDevice> {
  protected:
    // Something went wrong on the device, once; the machine is then as new for TearDown.
    void expectCaught() {
        EXPECT_EQ(cudaErrorLaunchFailure, cudaThreadSynchronize());
        EXPECT_EQ(1, software::usage().violations);
        test::startAfresh(test::machine());
    }
};

TEST_F(StrictMode, HostCodeCannotTouchDeviceMemory) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    volatile float* p = onDevice<float>(4);
    EXPECT_DEATH(p[0] = 1, "");
    EXPECT_DEATH((void)(p[3] > 0), "");
}

TEST_F(StrictMode, CopiesAreChecked) {
    constexpr auto up = cudaMemcpyHostToDevice, down = cudaMemcpyDeviceToHost;
    char host[64] = {};
    char* device = onDevice<char>(64);
    char* pinned = pageLocked<char>(64);
    struct {
        int expected, actual;
    } const cases[] = {
        {cudaErrorInvalidMemcpyDirection, cudaMemcpy(device, host, 64, down)},
        {cudaErrorInvalidMemcpyDirection, cudaMemcpy(host, device, 64, up)},
        {cudaErrorInvalidMemcpyDirection, cudaMemcpy(host, host, 64, up)},
        {cudaErrorInvalidMemcpyDirection, cudaMemcpy(device, device, 64, cudaMemcpyHostToHost)},
        {cudaErrorInvalidMemcpyDirection, cudaMemcpy(device, host, 64, 4)},
        {cudaErrorInvalidValue, cudaMemcpy(device, host, 65, up)},
        {cudaErrorInvalidValue, cudaMemcpy(device + 1, host, 64, up)},
        {cudaErrorInvalidValue, cudaMemcpy(nullptr, host, 1, up)},
        {cudaErrorInvalidValue, cudaMemcpy2D(device, 16, host, 8, 8, 5, up)},
        {cudaErrorInvalidPitchValue, cudaMemcpy2D(device, 7, host, 8, 8, 2, up)},
        {cudaErrorInvalidValue, cudaMemcpyAsync(device, host, 64, up, nullptr)},
        {cudaErrorInvalidValue, cudaMemcpyAsync(pinned, device, 65, down, nullptr)},
        {cudaErrorInvalidResourceHandle,
         cudaMemcpyAsync(pinned, device, 64, down, reinterpret_cast<cudaStream_t>(99))},
        {cudaSuccess, cudaMemcpy2D(device, 16, host, 8, 8, 4, up)},
        {cudaSuccess, cudaMemcpyAsync(pinned, device, 64, down, nullptr)},
        {cudaSuccess, cudaMemcpy(nullptr, nullptr, 0, up)},
    };
    for (const auto& c : cases) EXPECT_EQ(c.expected, c.actual) << "case " << &c - cases;
    EXPECT_EQ(cudaErrorInvalidResourceHandle, cudaGetLastError()) << "the last failure stays";
    EXPECT_EQ(cudaSuccess, cudaGetLastError());
    EXPECT_EQ(cudaSuccess, cudaThreadSynchronize());
    EXPECT_EQ(cudaErrorInvalidDevicePointer, cudaFree(device + 1));
    EXPECT_EQ(cudaErrorInvalidHostPointer, cudaFreeHost(device));
    cudaFree(device);
    EXPECT_EQ(cudaErrorInvalidDevicePointer, cudaFree(device));
}

TEST_F(StrictMode, KernelsReachOnlyLiveDeviceMemory) {
    float host[4] = {1, 1, 1, 1};
    cudalib::memset(host, 4, 2.0f);
    expectCaught();
    EXPECT_EQ(1, host[0]);
    float* freed = onDevice<float>(4);
    cudaFree(freed);
    cudalib::memset(freed, 4, 2.0f);
    expectCaught();
}

TEST_F(StrictMode, CublasOperandBeyondItsBlock) {
    float *a = onDevice<float>(6), *c = onDevice<float>(4);
    gemm(2, 2, 3, a, 2, a, 3, c, 2);
    EXPECT_EQ(cudaSuccess, cudaThreadSynchronize());
    gemm(2, 2, 3, a, 2, a, 3, c, 3);  // the second column of C ends one element too late
    expectCaught();
}

TEST_F(StrictMode, WritesBeyondTheEnds) {
    for (int at : {-1, 100}) {
        char* p = onDevice<char>(100);
        static_cast<char*>(software::bytesBehind(p))[at] = 1;
        expectCaught();
        char* q = pageLocked<char>(100);
        q[at] = 1;
        cudaFreeHost(q);  // found when the block is given back, too
        expectCaught();
    }
}

TEST_F(StrictMode, FreshMemoryIsPoisoned) {
    float *p = onDevice<float>(3), *h = pageLocked<float>(3);
    EXPECT_TRUE(std::isnan(firstOf(p + 2)) && std::isnan(h[0]));
}

// --- When operations run -------------------------------------------------------------------

class ScheduleTest : public WithBlocks<test::UnderBothSchedules> {
  protected:
    void SetUp() override {
        WithBlocks::SetUp();
        for (auto& s : stream) ASSERT_EQ(cudaSuccess, cudaStreamCreate(&s));
        for (auto& h : host) h = pageLocked<float>(1);
        for (auto& d : device) d = onDevice<float>(1);
        *host[0] = *host[1] = 1;
    }
    void TearDown() override {
        for (auto s : stream) cudaStreamDestroy(s);
        WithBlocks::TearDown();
    }
    bool late() const { return GetParam() == Schedule::latest; }
    void upload(int i, cudaStream_t on) {
        ASSERT_EQ(cudaSuccess, cudaMemcpyAsync(device[i], host[i], 4, cudaMemcpyHostToDevice, on));
    }

    cudaStream_t stream[2];
    float* host[2];
    float* device[2];
};

TEST_P(ScheduleTest, AsynchronousCopyRunsAtItsEndOfTheInterval) {
    upload(0, stream[0]);
    upload(1, stream[1]);
    cudaStreamSynchronize(stream[1]);  // not the stream of the first copy
    *host[0] = *host[1] = 2;
    cudaStreamSynchronize(stream[0]);
    EXPECT_EQ(late() ? 2 : 1, firstOf(device[0]));
    EXPECT_EQ(1, firstOf(device[1]));
}

TEST_P(ScheduleTest, OthersWaitForTheDefaultStream) {
    upload(0, stream[0]);
    cudalib::memset(device[0], 1, 5.0f);
    cudaMemcpyAsync(host[1], device[0], 4, cudaMemcpyDeviceToHost, stream[1]);
    cudaStreamSynchronize(stream[1]);
    EXPECT_EQ(5, *host[1]) << "after the kernel, which is after the upload";
    *host[0] = 2;
    EXPECT_EQ(5, firstOf(device[0]));
}

TEST_P(ScheduleTest, EveryBlockingCallEndsTheWait) {
    void* other = onDevice<float>(1);
    const Calls waits = {
        [] { cudaThreadSynchronize(); },
        [&] { firstOf(device[1]); },
        [&] { cudaFree(other); },
        [] { cublasShutdown(); },
        [&] {
            cudalib::memset(device[1], 1, 5.0f);  // the default stream waits for the others
            cudaStreamSynchronize(nullptr);
        },
    };
    for (const auto& wait : waits) {
        *host[0] = 1;
        upload(0, stream[0]);
        wait();
        *host[0] = 2;
        EXPECT_EQ(1, firstOf(device[0])) << "wait " << &wait - waits.data();
    }
    EXPECT_EQ(5, firstOf(device[1]));
    cublasInit();
}

TEST_P(ScheduleTest, DestroyedStreamFinishesItsWork) {
    upload(0, stream[0]);
    cudaStreamDestroy(stream[0]);
    EXPECT_EQ(cudaErrorInvalidResourceHandle, cudaStreamSynchronize(stream[0]));
    EXPECT_EQ(1, firstOf(device[0]));
    cudaStreamCreate(&stream[0]);
}

TEST_P(ScheduleTest, PageLockedMemoryFreedUnderItsCopy) {
    upload(0, stream[0]);
    cudaFreeHost(host[0]);
    EXPECT_EQ(late() ? cudaErrorLaunchFailure : cudaSuccess, cudaStreamSynchronize(stream[0]));
    EXPECT_EQ(late() ? 1 : 0, software::usage().violations);
    test::startAfresh(test::machine(), GetParam());
    SetUp();
}

LUMO_BOTH_SCHEDULES(ScheduleTest);

// --- Failures ------------------------------------------------------------------------------

class FaultTest : public WithBlocks<test::OnSoftwareDevice> {};

TEST_F(FaultTest, TheNthCallOfANameOrOfAny) {
    void *first = nullptr, *second = nullptr;
    software::inject({2, "cudaMalloc", cudaErrorMemoryAllocation});
    EXPECT_EQ(cudaSuccess, cudaMalloc(&first, 8));
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaMalloc(&second, 8));
    EXPECT_EQ(nullptr, second);
    EXPECT_EQ(cudaSuccess, cudaMalloc(&second, 8)) << "a fault strikes once";
    EXPECT_EQ("cudaMalloc", software::removeFault());
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaGetLastError());
    cudaFree(second);
    software::inject({1, "cudaFree", cudaErrorUnknown});
    EXPECT_EQ(cudaErrorUnknown, cudaFree(first)) << "it says so, but releases";
    EXPECT_EQ(0u, software::usage().deviceBytes);
    cudaGetLastError();
    software::inject({3, "", cudaErrorUnknown});
    cudaGetLastError();  // reading an error word does not count
    cublasGetError();
    cudaMalloc(&first, 8);
    cudaFree(first);
    EXPECT_EQ("", software::removeFault()) << "two calls so far";
    software::inject({1, "", cudaErrorUnknown, CUBLAS_STATUS_EXECUTION_FAILED});
    gemm(1, 1, 1, nullptr, 1, nullptr, 1, nullptr, 1);
    EXPECT_EQ("cublasSgemm", software::removeFault());
    EXPECT_EQ(CUBLAS_STATUS_EXECUTION_FAILED, cublasGetError());
    EXPECT_EQ(cudaSuccess, cudaGetLastError());
}

TEST_F(FaultTest, CublasErrorsStickUntilRead) {
    float* a = onDevice<float>(4);
    gemm(-1, 1, 1, a, 1, a, 1, a, 1);
    software::inject({1, "cublasSgemm", 30, CUBLAS_STATUS_INTERNAL_ERROR});
    gemm(1, 1, 1, a, 1, a, 1, a, 1);
    EXPECT_EQ(CUBLAS_STATUS_INVALID_VALUE, cublasGetError()) << "the first one";
    EXPECT_EQ(CUBLAS_STATUS_SUCCESS, cublasGetError());
    const Calls bad = {
        [&] { gemm(2, 1, 1, a, 1, a, 1, a, 2); },
        [&] { gemm(1, 2, 2, a, 1, a, 1, a, 1); },
        [&] { gemm(2, 1, 1, a, 2, a, 1, a, 1); },
        [&] { cublasSgemm('X', 'N', 1, 1, 1, 1, a, 1, a, 1, 0, a, 1); },
        [&] { cublasStrsm('X', 'U', 'N', 'N', 1, 1, 1, a, 1, a, 1); },
        [&] { cublasStrsm('R', 'L', 'C', 'U', 1, 2, 1, a, 1, a, 1); },
        [&] { cublasStrsm('L', 'U', 'N', 'N', 2, 1, 1, a, 2, a, 1); },
    };
    for (const auto& call : bad) {
        call();
        EXPECT_EQ(CUBLAS_STATUS_INVALID_VALUE, cublasGetError()) << "call " << &call - bad.data();
    }
}

TEST_F(FaultTest, CublasNeedsItsStartAndTheDevicesPrecision) {
    software::start(test::machine(12), Schedule::latest);
    for (int expected : {CUBLAS_STATUS_NOT_INITIALIZED, CUBLAS_STATUS_SUCCESS}) {
        gemm(0, 0, 0, nullptr, 1, nullptr, 1, nullptr, 1);
        EXPECT_EQ(expected, cublasGetError());
        cublasInit();
    }
    cublasDgemm('N', 'N', 0, 0, 0, 1, nullptr, 1, nullptr, 1, 0, nullptr, 1);
    EXPECT_EQ(CUBLAS_STATUS_ARCH_MISMATCH, cublasGetError());
}

TEST_F(FaultTest, LaunchLimits) {
    float* p = onDevice<float>(1);
    auto launch = [p](dim3 grid, dim3 block) {
        EXPECT_EQ(cudaSuccess, cudaConfigureCall(grid, block, 0, nullptr));
        cudalib::launchConfigured(&CudaMemsetTypeKernel<cudalib::Map1D, float>, p, 1, 1);
        return cudaGetLastError();
    };
    EXPECT_EQ(cudaSuccess, launch({65535, 1, 1}, {1024, 1, 1}));
    for (dim3 grid : {dim3{65536, 1, 1}, {1, 65536, 1}, {1, 1, 0}})
        EXPECT_EQ(cudaErrorInvalidConfiguration, launch(grid, {1, 1, 1})) << grid.x << grid.y;
    for (dim3 block : {dim3{0, 1, 1}, {1025, 1, 1}, {33, 32, 1}, {1, 1, 65}})
        EXPECT_EQ(cudaErrorInvalidConfiguration, launch({1, 1, 1}, block)) << block.x << block.y;
    EXPECT_EQ(1, firstOf(p));
    cudalib::launchConfigured(&CudaMemsetTypeKernel<cudalib::Map1D, float>, p, 2, 1);
    EXPECT_EQ(cudaErrorMissingConfiguration, cudaGetLastError());
    cudaConfigureCall({1, 1, 1}, {1, 1, 1}, 0, nullptr);
    EXPECT_EQ(cudaErrorInvalidDeviceFunction, cudaLaunch("no stub"));
    EXPECT_EQ(1, firstOf(p));
    auto* const kernel = &CudaMemsetTypeKernel<cudalib::Map1D, float>;
    for (auto [capability, most] : {std::pair{20, 0}, {70, 8}}) {
        software::start(test::machine(capability), Schedule::latest);
        EXPECT_EQ(most, cudalib::cooperativeBlocks(kernel, 256));
        cudaConfigureCall(dim3(unsigned(most) + 1), 256, 0, nullptr);
        cudalib::launchConfigured<true>(kernel, onDevice<float>(1), 3, 1);
        EXPECT_EQ(cudaErrorLaunchOutOfResources, cudaGetLastError());
    }
}

// --- Memory and devices --------------------------------------------------------------------

TEST_F(FaultTest, MemoryIsLimitedAndAccounted) {
    start(test::machine(20, 1 << 20));
    void *a = nullptr, *b = nullptr;
    ASSERT_EQ(cudaSuccess, cudaMalloc(&a, (1 << 20) - 100));
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaMalloc(&b, 101));
    std::size_t pitch = 0, free = 1, total = 0;
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaMalloc(&b, ~std::size_t(0)));
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaMallocHost(&b, ~std::size_t(0)));
    EXPECT_EQ(cudaErrorMemoryAllocation, cudaMallocPitch(&b, &pitch, ~std::size_t(0), 1));
    EXPECT_EQ(nullptr, b);
    ASSERT_EQ(cudaSuccess, cudaMalloc(&b, 100));
    cudaMemGetInfo(&free, &total);
    EXPECT_EQ(0u, free);
    EXPECT_EQ(std::size_t(1) << 20, total);
    cudaFree(a);
    EXPECT_EQ(100u, software::usage().deviceBytes);
    EXPECT_EQ(total, software::usage().devicePeak);
    software::resetPeak();
    EXPECT_EQ(100u, software::usage().devicePeak);
    cudaFree(b);
    EXPECT_EQ(cudaSuccess, cudaMalloc(&a, 0));
    EXPECT_EQ(nullptr, a);
    EXPECT_EQ(cudaSuccess, cudaFree(nullptr));
}

TEST_F(FaultTest, ProductionKeepsFreedBlocksUntilCublasStops) {
    start(test::machine(20, std::size_t(1) << 30), Schedule::production);
    constexpr std::size_t size = std::size_t(64) << 20;
    char* p = onDevice<char>(size);
    cudaFree(p);
    char* q = onDevice<char>(size - 1000);
    EXPECT_EQ(p, q);
    EXPECT_EQ(size - 1000, software::usage().deviceBytes) << "what was asked for";
    cudaFree(q);
    cublasShutdown();
#ifndef __SANITIZE_ADDRESS__  // whose allocator keeps freed memory of its own
    unsigned char resident;
    EXPECT_EQ(-1, mincore(p, 4096, &resident)) << "the block's pages are gone";
#endif
    cublasInit();
}

TEST_F(FaultTest, TheContextBindsTheDevice) {
    const software::Machine two{{test::device(20, "first"), test::device(13, "second")}};
    cudaStream_t stream;
    const Calls binding = {
        [&] { onDevice<char>(1); },
        [] { cublasInit(); },
        [&] { cudaStreamCreate(&stream); },
        [] { cudaThreadSynchronize(); },
    };
    for (const auto& bind : binding) {
        software::start(two, Schedule::latest);
        int device = -1;
        EXPECT_EQ(cudaErrorInvalidDevice, cudaSetDevice(2));
        cudaThreadSynchronize();  // nothing was chosen: the choice stays open
        EXPECT_EQ(cudaSuccess, cudaSetDevice(0));
        EXPECT_EQ(cudaSuccess, cudaSetDevice(1));
        bind();
        EXPECT_EQ(cudaErrorSetOnActiveProcess, cudaSetDevice(0)) << &bind - binding.data();
        EXPECT_EQ(cudaSuccess, cudaGetDevice(&device));
        EXPECT_EQ(1, device);
    }
}

}  // namespace
