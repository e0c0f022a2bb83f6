// Memory, and the barriers of a block.
#include "platform/cuda/emulation/selftest.h"

namespace selftest {
namespace {

class Blocks : public EmulatedGpu {
  protected:
    static void run(Fault fault) {
        Device<int> in(upTo(256)), out(256);
        launch(kernel(Name::reverse, fault), 1, 256, 256, in.get(), out.get());
        if (fault != Fault::none) return;
        const std::vector<int> result = out.host();
        for (int i = 0; i < 256; ++i) EXPECT_EQ(255 - i, result[std::size_t(i)]);
    }
};

TEST_F(Blocks, Barriers) {
    run(Fault::none);
    seeded("race", [] { run(Fault::noBarrier); });
    seeded("barrier", [] { run(Fault::divergentBarrier); });
    seeded("uninitialised", [] { run(Fault::uninitialised); });
}

TEST_F(Blocks, BoundsOfMemory) {
    seeded("memory", [] { run(Fault::bounds); });
    seeded("memory", [] { run(Fault::sharedBounds); });
    seeded("memory", [] {
        Device<char> in(std::vector<char>(16, 0));
        Device<int> out(1);
        launch(kernel(Name::misaligned), 1, 1, in.get(), out.get());
        cudaDeviceSynchronize();
    });
    seeded("memory", [] {  // page-locked memory, and memory that was freed
        void* host = nullptr;
        cudaMallocHost(&host, 1024);
        Device<int> out(256);
        launch(kernel(Name::reverse), 1, 256, 256, static_cast<int*>(host), out.get());
        cudaDeviceSynchronize();
        emulatedGpuForgive();
        int* gone = out.get();
        cudaFree(out.get());
        out.get() = nullptr;
        launch(kernel(Name::reverse), 1, 256, 256, gone, gone);
    });
}

// A failed kernel is told at the next call that waits, and by every call from then on.
TEST_F(Blocks, ErrorsStay) {
    Device<int> in(upTo(256)), out(256);
    EXPECT_EQ(cudaSuccess, launch(kernel(Name::spin), 1, 1, in.get()));  // *in is 0
    EXPECT_EQ(cudaErrorLaunchTimeout, cudaDeviceSynchronize());
    EXPECT_EQ(cudaErrorLaunchTimeout, cudaMemset(in.get(), 0, 4));
    EXPECT_EQ(cudaErrorLaunchTimeout, cudaGetLastError());
    EXPECT_EQ(1, emulatedGpuFindings("barrier"));
    emulatedGpuForgive();
}

TEST_F(Blocks, BlocksRaceForOneNumber) {
    Device<int> sum(std::vector<int>{0});
    seeded("race", [&] { launch(kernel(Name::sumWithoutAtomics), 2, 32, sum.get()); });
}

TEST_F(Blocks, HaveDynamicSharedMemory) {
    constexpr unsigned n = 1024;
    const void* its = kernel(Name::dynamicReverse);
    std::vector<double> numbers(n);
    for (unsigned i = 0; i < n; ++i) numbers[i] = i;
    Device<double> in(numbers), out(n);
    void* arguments[] = {&in.get(), &out.get()};
    EXPECT_EQ(cudaSuccess, cudaLaunchKernel(its, 1, n, arguments, n * sizeof(double), nullptr));
    EXPECT_EQ(1.0, out.host()[n - 2]);
    seeded("memory",
           [&] { cudaLaunchKernel(its, 1, n, arguments, (n - 1) * sizeof(double), nullptr); });
    seeded("launch", [&] { cudaLaunchKernel(its, 1, n, arguments, 60000, nullptr); });
    EXPECT_EQ(cudaSuccess,
              cudaFuncSetAttribute(its, cudaFuncAttributeMaxDynamicSharedMemorySize, 60000));
    EXPECT_EQ(cudaSuccess, cudaLaunchKernel(its, 1, n, arguments, 60000, nullptr));
}

TEST_F(Blocks, ShapesHaveLimits) {
    Device<int> in(upTo(256)), out(256);
    for (unsigned lanes : {0u, 1025u})
        seeded("launch", [&] {
            EXPECT_EQ(cudaErrorInvalidConfiguration,
                      launch(kernel(Name::reverse), 1, lanes, 256, in.get(), out.get()));
        });
}

}  // namespace
}  // namespace selftest
