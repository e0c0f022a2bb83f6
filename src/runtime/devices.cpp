#include "runtime/devices.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>

#include "cudalib/exceptions.h"

namespace lumo {
namespace {

std::mutex tableMutex;
std::unique_ptr<std::vector<Device>> table;

cudaDeviceProp propertiesOf(int device) {
    cudaDeviceProp properties;
    cudalib::checkCudaError(cudaGetDeviceProperties(&properties, device));
    return properties;
}

double score(const Device& device, double performanceWeight, double memoryWeight) {
    // Eight cores for every generation, and no normalisation: the memory term dominates. Both
    // are how users' machines have been chosen so far.
    const std::uint64_t performance = std::uint64_t(device.properties.multiProcessorCount) * 8 *
                                      std::uint64_t(device.properties.clockRate);
    const std::uint64_t memory = device.properties.totalGlobalMem;
    return performanceWeight * double(performance) + memoryWeight * double(memory);
}

const cudaDeviceProp& executingDevice() {
    int device = 0;
    cudalib::checkCudaError(cudaGetDevice(&device));
    return deviceTable().at(std::size_t(device)).properties;
}

}  // namespace

int usableDeviceCount() {
    int count = 0;
    const cudaError_t error = cudaGetDeviceCount(&count);
    if (error == cudaErrorNoDevice) {  // how some drivers say "none"
        cudaGetLastError();
        return 0;
    }
    cudalib::checkCudaError(error);
    if (count != 1) return count;
    const cudaDeviceProp only = propertiesOf(0);
    const bool emulation = only.major == 9999 && only.minor == 9999;
    return only.major < 1 || emulation ? 0 : 1;
}

const std::vector<Device>& deviceTable() {
    std::lock_guard<std::mutex> lock(tableMutex);
    if (!table) {
        auto devices = std::make_unique<std::vector<Device>>();
        const int count = usableDeviceCount();
        for (int i = 0; i < count; ++i) {
            const cudaDeviceProp p = propertiesOf(i);
            const std::string name = p.name;
            devices->push_back({i, name, p, name.find("Tesla") != std::string::npos, p.major,
                                p.minor, p.major * 10 + p.minor});
        }
        table = std::move(devices);
    }
    return *table;
}

int deviceCapability(int device) {
    return deviceTable().at(std::size_t(device)).capability;
}

bool copiesOverlap() {
    return executingDevice().deviceOverlap != 0;
}

int multiprocessors() {
    return executingDevice().multiProcessorCount;
}

int bestDevice(double performanceWeight, double memoryWeight) {
    int best = deviceTable().empty() ? -1 : 0;
    double bestScore = 0;
    bool teslaSeen = false;
    for (const Device& device : deviceTable()) {
        const double s = score(device, performanceWeight, memoryWeight);
        const bool firstTesla = device.tesla && !teslaSeen;
        if (firstTesla || (device.tesla == teslaSeen && s > bestScore)) {
            best = device.index;
            bestScore = s;
            teslaSeen = device.tesla;
        }
    }
    return best;
}

std::string sizeText(std::size_t bytes) {
    double value = double(bytes);
    int unit = 0;
    for (; value >= 1024 && unit < 6; ++unit) value /= 1024;
    char text[32];
    std::snprintf(text, sizeof text, "%.0f %cB", value, " KMGTPE"[unit]);
    return text;
}

void forgetDevices() {
    std::lock_guard<std::mutex> lock(tableMutex);
    table.reset();
}

}  // namespace lumo
