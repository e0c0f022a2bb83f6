// Streams, events, copies, CUBLAS and the counts.
#include <cublas_v2.h>

#include "platform/cuda/emulation/selftest.h"

namespace selftest {
namespace {

constexpr int n = 64;

class RuntimeOfIt : public EmulatedGpu {
  protected:
    void SetUp() override {
        cudaStreamCreate(&blocking_);
        cudaStreamCreateWithFlags(&other_, cudaStreamNonBlocking);
        cudaEventCreateWithFlags(&event_, cudaEventDisableTiming);
        cudaMallocHost(reinterpret_cast<void**>(&host_), n * sizeof(float));
    }
    void TearDown() override {
        cudaFreeHost(host_);
        cudaEventDestroy(event_);
        cudaStreamDestroy(other_);
        cudaStreamDestroy(blocking_);
        EmulatedGpu::TearDown();
    }

    // y := y + x on a stream.
    static void add(float* x, float* y, cudaStream_t stream) {
        int size = n;
        float a = 1;
        void* arguments[] = {&size, &a, &x, &y};
        EXPECT_EQ(cudaSuccess, cudaLaunchKernel(kernel(Name::axpy), 1, n, arguments, 0, stream));
    }
    void download(const float* from, cudaStream_t stream) {
        EXPECT_EQ(cudaSuccess, cudaMemcpyAsync(host_, from, n * sizeof(float), anywhere, stream));
    }

    cudaStream_t blocking_{}, other_{};
    cudaEvent_t event_{};
    float* host_ = nullptr;
};

// Under the schedule that does everything as late as it may, only what is waited for is done.
TEST_F(RuntimeOfIt, StreamsWaitAsTheyAreToldTo) {
    Device<float> x(std::vector<float>(n, 1)), y(std::vector<float>(n, 1));
    const char* schedule = std::getenv("EMULATED_GPU_SCHEDULE");
    const bool late = !schedule || std::string(schedule) == "late";
    auto expectAfter = [&](float expected, cudaStream_t waitedFor) {
        host_[0] = -1;
        download(y.get(), waitedFor);
        cudaStreamSynchronize(waitedFor);
        EXPECT_EQ(expected, host_[0]);
    };
    add(x.get(), y.get(), nullptr);  // the default stream and a blocking one wait for each other
    expectAfter(2, blocking_);
    add(x.get(), y.get(), blocking_);
    expectAfter(3, nullptr);
    add(x.get(), y.get(), blocking_);
    if (late) {
        expectAfter(3, other_);  // nobody has said that it waits
        EXPECT_EQ(cudaErrorNotReady, cudaStreamQuery(blocking_));
        cudaGetLastError();
    }
    EXPECT_EQ(cudaSuccess, cudaEventRecord(event_, blocking_));
    EXPECT_EQ(cudaSuccess, cudaStreamWaitEvent(other_, event_, 0));
    expectAfter(4, other_);
    add(x.get(), y.get(), other_);
    if (late) expectAfter(4, nullptr);
    EXPECT_EQ(cudaSuccess, cudaEventRecord(event_, other_));
    EXPECT_EQ(cudaSuccess, cudaEventSynchronize(event_));
    EXPECT_EQ(cudaSuccess, cudaEventQuery(event_));
    expectAfter(5, nullptr);
}

TEST_F(RuntimeOfIt, WhatDoesNotExistIsFound) {
    cudaStreamDestroy(blocking_);
    seeded("stream", [&] { cudaStreamSynchronize(blocking_); });
    cudaStreamCreate(&blocking_);
    seeded("stream", [&] { cudaEventRecord(reinterpret_cast<cudaEvent_t>(this), nullptr); });
    seeded("memory", [] {
        Device<float> x(n);
        cudaFree(x.get() + 1);
    });
    cudaGetLastError();
}

TEST_F(RuntimeOfIt, CopiesStayInBounds) {
    Device<float> x(std::vector<float>(n, 1));
    std::vector<float> pageable(n + 1, 2);
    seeded("copy",
           [&] { cudaMemcpy(x.get(), pageable.data(), (n + 1) * sizeof(float), anywhere); });
    seeded("copy", [&] {
        cudaMemcpy2D(x.get(), 8 * sizeof(float), pageable.data(), 4 * sizeof(float),
                     5 * sizeof(float), 2, anywhere);
    });
    seeded("copy",
           [&] { cudaMemcpy(x.get(), pageable.data(), sizeof(float), cudaMemcpyDeviceToHost); });
    EXPECT_EQ(1.0f, x.host()[n - 1]);
}

TEST_F(RuntimeOfIt, OperandsOfCublasAreChecked) {
    Device<float> a(std::vector<float>(16, 1)), c(std::vector<float>(16, 0));
    cublasHandle_t handle = nullptr;
    ASSERT_EQ(CUBLAS_STATUS_SUCCESS, cublasCreate(&handle));
    auto gemm = [&](int k, int lda, float* result) {
        const float one = 1, zero = 0;
        return cublasSgemm(handle, CUBLAS_OP_N, CUBLAS_OP_N, 4, 4, k, &one, a.get(), lda, a.get(),
                           4, &zero, result, 4);
    };
    EXPECT_EQ(CUBLAS_STATUS_SUCCESS, gemm(4, 4, c.get()));
    EXPECT_EQ(4.0f, c.host()[15]);
    seeded("operand", [&] { EXPECT_EQ(CUBLAS_STATUS_INVALID_VALUE, gemm(4, 3, c.get())); });
    seeded("operand", [&] { gemm(5, 4, c.get()); });      // A has four columns
    seeded("operand", [&] { gemm(4, 4, c.get() + 1); });  // one element too many
    seeded("operand", [&] { gemm(4, 4, host_); });        // not on the device
    cublasDestroy(handle);
    seeded("operand", [&] { gemm(4, 4, c.get()); });
}

TEST_F(RuntimeOfIt, CountsWhatACallDoes) {
    Device<float> x(std::vector<float>(n, 1)), y(std::vector<float>(n, 1));
    const char* names[] = {
        "launch",      "copy",  "copy asynchronous", "copy page-locked", "copy pageable",
        "copy device", "bytes", "synchronise",       "allocate",         "cublas"};
    auto all = [&] {
        std::vector<long long> counts;
        for (const char* name : names) counts.push_back(emulatedGpuCount(name));
        return counts;
    };
    const std::vector<long long> before = all();
    add(x.get(), y.get(), nullptr);
    download(y.get(), blocking_);
    cudaMemcpy(x.get(), y.get(), n * sizeof(float), anywhere);
    cudaStreamSynchronize(blocking_);
    std::vector<long long> made = all();
    for (std::size_t i = 0; i < made.size(); ++i) made[i] -= before[i];
    EXPECT_EQ((std::vector<long long>{1, 2, 1, 1, 0, 1, 2 * n * 4, 1, 0, 0}), made);
}

}  // namespace
}  // namespace selftest
