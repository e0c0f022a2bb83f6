#include "platform/registry.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <unordered_map>

#include "platform/cuda3.h"

namespace platform {
namespace {

struct Unit {
    FatBinary image;
    std::vector<const void*> stubs;
};

struct Registry {
    std::mutex mutex;
    std::unordered_map<const void*, const Kernel*> byStub;
    std::vector<const Kernel*> inOrder;
};

// Never destroyed: units unregister from exit handlers, in an order nobody controls.
Registry& registry() {
    static auto* instance = new Registry;
    return *instance;
}

}  // namespace

const Kernel* findKernel(const void* stub) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto found = r.byStub.find(stub);
    return found == r.byStub.end() ? nullptr : found->second;
}

std::vector<const Kernel*> registeredKernels() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.inOrder;
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
    registry().byStub[stub] = kernel;
    registry().inOrder.push_back(kernel);
    unit->stubs.push_back(stub);
}

extern "C" void __cudaUnregisterFatBinary(void** handle) {
    auto* unit = reinterpret_cast<platform::Unit*>(handle);
    {
        std::lock_guard<std::mutex> lock(registry().mutex);
        for (const void* stub : unit->stubs) {
            auto found = registry().byStub.find(stub);
            auto& order = registry().inOrder;
            order.erase(std::remove(order.begin(), order.end(), found->second), order.end());
            registry().byStub.erase(found);
        }
    }
    delete unit;
}

extern "C" cudaError_t cudaLaunch(const char* stub) {
    return platform::launch(platform::findKernel(stub));
}
