// What the emulated GPU's own tests share: device memory, launches, and seeded faults that must be
// found.
#pragma once

#include <cuda_runtime_api.h>
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "platform/cuda/emulation/control.h"
#include "platform/cuda/emulation/selftest_kernels.h"

namespace selftest {

inline constexpr cudaMemcpyKind anywhere = cudaMemcpyDefault;

// Numbers in device memory.
template <class T>
class Device {
  public:
    explicit Device(std::size_t n) : n_(n) {
        EXPECT_EQ(cudaSuccess, cudaMalloc(reinterpret_cast<void**>(&data_), n * sizeof(T)));
    }
    explicit Device(const std::vector<T>& host) : Device(host.size()) {
        EXPECT_EQ(cudaSuccess, cudaMemcpy(data_, host.data(), n_ * sizeof(T), anywhere));
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    ~Device() { cudaFree(data_); }

    T*& get() { return data_; }
    std::vector<T> host() const {
        std::vector<T> all(n_);
        EXPECT_EQ(cudaSuccess, cudaMemcpy(all.data(), data_, n_ * sizeof(T), anywhere));
        return all;
    }

  private:
    T* data_ = nullptr;
    std::size_t n_;
};

template <class... Argument>
cudaError_t launch(const void* kernel, unsigned blocks, unsigned lanes, Argument... arguments) {
    void* pointers[] = {&arguments...};
    return cudaLaunchKernel(kernel, blocks, lanes, pointers, 0, nullptr);
}

template <class... Argument>
cudaError_t launchCooperative(const void* kernel, unsigned blocks, unsigned lanes,
                              Argument... arguments) {
    void* pointers[] = {&arguments...};
    return cudaLaunchCooperativeKernel(kernel, blocks, lanes, pointers, 0, nullptr);
}

template <class... Argument>
cudaError_t launchClusters(const void* kernel, unsigned blocks, unsigned lanes, unsigned cluster,
                           Argument... arguments) {
    void* pointers[] = {&arguments...};
    cudaLaunchAttribute attribute{};
    attribute.id = cudaLaunchAttributeClusterDimension;
    attribute.val.clusterDim.x = cluster;
    attribute.val.clusterDim.y = attribute.val.clusterDim.z = 1;
    cudaLaunchConfig_t configuration{};
    configuration.gridDim = blocks;
    configuration.blockDim = lanes;
    configuration.attrs = &attribute;
    configuration.numAttrs = 1;
    return cudaLaunchKernelExC(&configuration, kernel, pointers);
}

inline std::vector<int> upTo(int n) {
    std::vector<int> numbers(std::size_t(n), 0);
    for (int i = 0; i < n; ++i) numbers[std::size_t(i)] = i;
    return numbers;
}

// A test that ends without a fault, unless it says that it seeds one.
class EmulatedGpu : public ::testing::Test {
  protected:
    void TearDown() override {
        EXPECT_EQ(cudaSuccess, cudaDeviceSynchronize());
        EXPECT_EQ(0, emulatedGpuFindings(nullptr));
        emulatedGpuForgive();
    }

    // Runs what has a fault, which must be found as one of this kind; then nothing has happened.
    template <class Run>
    static void seeded(const char* kind, Run run) {
        EXPECT_EQ(0, emulatedGpuFindings(nullptr)) << "before the seeded fault";
        run();
        cudaDeviceSynchronize();
        EXPECT_GT(emulatedGpuFindings(kind), 0) << "a seeded fault was not found: " << kind;
        emulatedGpuForgive();
    }
};

}  // namespace selftest
