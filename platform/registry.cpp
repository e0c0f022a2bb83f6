#include "platform/registry.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/cuda3.h"

namespace platform {
namespace {

struct Unit {
    FatBinary image;
    std::vector<const void*> stubs;
};

using Entry = std::pair<const void*, const Kernel*>;  // a stub and its kernel

struct Registry {
    std::mutex mutex;
    std::vector<Entry> inOrder;
    // The same by stub, for launches, which take no lock; null after a change, until somebody
    // looks. What has been looked at is kept: a launch may still be reading it.
    std::atomic<const std::vector<Entry>*> byStub{nullptr};
    std::vector<std::unique_ptr<const std::vector<Entry>>> sorted;
};

// Never destroyed: units unregister from exit handlers, in an order nobody controls.
Registry& registry() {
    static auto* instance = new Registry;
    return *instance;
}

const std::vector<Entry>* sortByStub() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto entries = std::make_unique<std::vector<Entry>>(r.inOrder);
    std::sort(entries->begin(), entries->end());
    r.sorted.push_back(std::move(entries));
    r.byStub.store(r.sorted.back().get(), std::memory_order_release);
    return r.sorted.back().get();
}

}  // namespace

const Kernel* findKernel(const void* stub) {
    const std::vector<Entry>* entries = registry().byStub.load(std::memory_order_acquire);
    if (!entries) entries = sortByStub();
    const auto found = std::lower_bound(entries->begin(), entries->end(), Entry(stub, nullptr));
    return found != entries->end() && found->first == stub ? found->second : nullptr;
}

std::vector<const Kernel*> registeredKernels() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    std::vector<const Kernel*> kernels;
    for (const auto& [stub, kernel] : r.inOrder) kernels.push_back(kernel);
    return kernels;
}

}  // namespace platform

using platform::registry;

extern "C" void** __cudaRegisterFatBinary(void* image) {
    return reinterpret_cast<void**>(
        new platform::Unit{*static_cast<const platform::FatBinary*>(image), {}});
}

extern "C" void __cudaRegisterFunction(void** handle, const char* stub, char* /*deviceFunction*/,
                                       const char* deviceName, int /*threadLimit*/, void* /*tid*/,
                                       void* /*bid*/, void* /*blockDim*/, void* /*gridDim*/,
                                       int* /*warpSize*/) {
    auto* unit = reinterpret_cast<platform::Unit*>(handle);
    const platform::Kernel* begin = unit->image.kernels;
    const platform::Kernel* end = begin + unit->image.count;
    const platform::Kernel* kernel =
        std::find_if(begin, end, [&](const platform::Kernel& candidate) {
            return std::strcmp(candidate.name, deviceName) == 0;
        });
    if (kernel == end) return;  // a launch of this stub reports "invalid device function"
    std::lock_guard<std::mutex> lock(registry().mutex);
    registry().inOrder.emplace_back(stub, kernel);
    registry().byStub = nullptr;
    unit->stubs.push_back(stub);
}

extern "C" void __cudaUnregisterFatBinary(void** handle) {
    auto* unit = reinterpret_cast<platform::Unit*>(handle);
    {
        std::lock_guard<std::mutex> lock(registry().mutex);
        auto& entries = registry().inOrder;
        for (const void* stub : unit->stubs)
            entries.erase(std::find_if(entries.begin(), entries.end(),
                                       [&](const auto& entry) { return entry.first == stub; }));
        registry().byStub = nullptr;
    }
    delete unit;
}

extern "C" cudaError_t cudaLaunch(const char* stub) {
    return platform::launch(platform::findKernel(stub), 0);
}
