// What micro-measurements of the platform that runs are made of: its calls, timed.
#pragma once

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/measure.h"
#include "platform/cuda3.h"
#include "platform/timeline/machine.h"

namespace lumo::micro {

inline const platform::Choice& here() {
    return *platform::lumo_private_platform(nullptr);
}
inline const platform::Table& table() {
    return *here().table;
}

inline void check(int error) {
    if (error) throw std::runtime_error(table().getErrorString(error));
}

// The least of a call's seconds, from its start until the device is through: what else runs on a
// machine only adds.
inline double secondsOfDevice(const std::function<void()>& call, double enough = 0.15) {
    call();
    check(table().threadSynchronize());
    std::vector<double> times;
    for (double spent = 0; times.size() < 7 || (spent < enough && times.size() < 200);) {
        times.push_back(secondsOf([&] {
            call();
            check(table().threadSynchronize());
        }));
        spent += times.back();
    }
    return *std::min_element(times.begin(), times.end());
}

class DeviceMemory {
  public:
    explicit DeviceMemory(std::size_t bytes) {
        check(table().malloc(&data_, bytes));
        check(table().memset(data_, 0, bytes));
    }
    ~DeviceMemory() { table().free(data_); }
    DeviceMemory(const DeviceMemory&) = delete;
    DeviceMemory& operator=(const DeviceMemory&) = delete;
    float* get() const { return static_cast<float*>(data_); }

  private:
    void* data_ = nullptr;
};

// Launches one of the library's kernels with these arguments, of the types that it has them.
template <bool cooperative = false, class... A>
void launch(const platform::Kernel* kernel, platform::Dim3 grid, platform::Dim3 block,
            A... arguments) {
    check(table().configureCall(grid, block, 0, nullptr));
    std::size_t offset = 0;
    const auto push = [&](const auto& argument) {
        constexpr std::size_t size = sizeof argument;  // NOLINT(bugprone-sizeof-expression)
        offset = (offset + size - 1) / size * size;
        check(table().setupArgument(&argument, size, offset));
        offset += size;
    };
    (push(arguments), ...);
    check(table().launch(kernel, cooperative));
}

inline const platform::Kernel* kernelNamed(const char* part) {
    const platform::Kernel* kernel = here().kernel(part);
    if (!kernel) throw std::runtime_error(std::string("the library has no kernel ") + part);
    return kernel;
}

// Parts of a machine, in the order in which they build on each other.
void measureCalls(timeline::Machine& m);
void measureAllocations(timeline::Machine& m);
void measureCopies(timeline::Machine& m);
void measureMemory(timeline::Machine& m);
void measureProducts(timeline::Machine& m);
void measureSolves(timeline::Machine& m);
void measurePanels(timeline::Machine& m);

}  // namespace lumo::micro
