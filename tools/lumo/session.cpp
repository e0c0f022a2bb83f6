#include "session.h"

#include <stdexcept>

namespace lumo {

std::string describe(lumoStatus status, int info) {
    char text[512];
    if (lumoGetErrorInfoString(status, info, text, sizeof text) != lumoNoError)
        return lumoGetStatusString(status);
    return text;
}

Session::Session() {
    const lumoStatus status = lumoInitialize();
    if (status == lumoNoError) return;
    const int info = lumoGetThreadErrorInfo();
    lumoShutdown();  // the failed call has registered the thread
    throw std::runtime_error(describe(status, info));
}

std::string Session::device() const {
    int device = 0;
    lumoGetExecutingDevice(&device);
    return deviceText(device);
}

std::string deviceText(int device) {
    char text[300];
    const lumoStatus status = lumoGetDeviceInfo(device, text, sizeof text);
    return status == lumoNoError ? text : describe(status, lumoGetThreadErrorInfo());
}

}  // namespace lumo
