// The CUDA devices of this machine and the choice among them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/cuda3.h"

namespace lumo {

struct Device {
    int index;
    std::string name;
    cudaDeviceProp properties;
    bool tesla;  // the name contains "Tesla"
    int major, minor;
    int capability;  // major times 10 plus minor
};

// A single device of capability below 1, or the emulation device (9999.9999), does not count.
int usableDeviceCount();

// One record per usable device, read once per process.
const std::vector<Device>& deviceTable();
int deviceCapability(int device);
// Whether the executing device copies while it computes.
bool copiesOverlap();
// Its multiprocessors; of a CPU, the threads.
int multiprocessors();

// The device with the highest score, performanceWeight * multiprocessors * 8 * clock (kHz) +
// memoryWeight * memory (bytes), a Tesla before any other; -1 if there is none.
int bestDevice(double performanceWeight, double memoryWeight);

// A size in binary units, as "4 GB".
std::string sizeText(std::size_t bytes);

void forgetDevices();

}  // namespace lumo
