// lumoGetDeviceCount, lumoSelectDevice, lumoGetExecutingDevice, lumoGetDeviceInfo.
#include <cstring>

#include "runtime/devices.h"
#include "runtime/frame.h"

namespace {

void requireDevice(int device) {
    if (device < 0 || device >= lumo::usableDeviceCount()) lumo::throwArgumentError(-1);
}

}  // namespace

lumoStatus lumoGetDeviceCount(int* count) {
    return lumo::queryFrame([&] {
        if (!count) lumo::throwArgumentError(-1);
        *count = lumo::usableDeviceCount();
    });
}

lumoStatus lumoSelectDevice(int device) {
    return lumo::queryFrame([&] {
        requireDevice(device);
        // An explicit wish that comes too late is an error, memory errors included.
        if (const cudaError_t error = cudaSetDevice(device))
            throw cudalib::CudaRuntimeException(error);
    });
}

lumoStatus lumoGetExecutingDevice(int* device) {
    return lumo::initializedFrame([&] {
        if (!device) lumo::throwArgumentError(-1);
        cudalib::checkCudaError(cudaGetDevice(device));
    });
}

lumoStatus lumoGetDeviceInfo(int device, char* buffer, int bufferSize) {
    return lumo::queryFrame([&] {
        requireDevice(device);
        if (!buffer) lumo::throwArgumentError(-2);
        if (bufferSize <= 0) lumo::throwArgumentError(-3);
        const lumo::Device& record = lumo::deviceTable().at(std::size_t(device));
        const std::string text =
            record.name + " (" + lumo::sizeText(record.properties.totalGlobalMem) + ")";
        std::strncpy(buffer, text.c_str(), std::size_t(bufferSize));
        buffer[bufferSize - 1] = '\0';
    });
}
