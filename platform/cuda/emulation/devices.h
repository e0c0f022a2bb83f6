// Devices, and what is current in a thread: for the runtime a device, for the driver a context.
#pragma once

namespace emulated {

// Of the calling thread. One that has chosen none works on the first device.
int currentDevice();

// Makes a device current for the time of the work that it does.
class DeviceOfWork {
  public:
    explicit DeviceOfWork(int device);
    ~DeviceOfWork();
    DeviceOfWork(const DeviceOfWork&) = delete;
    DeviceOfWork& operator=(const DeviceOfWork&) = delete;

  private:
    int before_;
};

constexpr int multiprocessors = 132, sharedBytesOfBlock = 49152, sharedBytesAtMost = 232448;

}  // namespace emulated
