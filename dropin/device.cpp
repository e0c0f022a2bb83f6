#include "dropin/device.h"

#include <atomic>
#include <mutex>

#include "dropin/crossover_file.h"
#include "lumo_thread.h"

namespace lumo::dropin {
namespace {

std::string describe(lumoStatus status) {
    char text[512];
    return lumoGetErrorInfoString(status, lumoGetThreadErrorInfo(), text, sizeof text) ==
                   lumoNoError
               ? text
               : lumoGetStatusString(status);
}

std::string describeDevice(int device) {
    char text[300];
    const lumoStatus status = lumoGetDeviceInfo(device, text, sizeof text);
    return status == lumoNoError ? text : describe(status);
}

std::string findPlatform() {
    int devices = 0;
    if (lumoGetDeviceCount(&devices) != lumoNoError || devices == 0) return "none";
    return describeDevice(0).rfind("Lumo software", 0) == 0 ? "software" : "cuda";
}

std::mutex textMutex;
std::string& text() {  // never destroyed: the report is written late
    static auto* instance = new std::string("not used");
    return *instance;
}

// A word that is still readable when the registration below has been destroyed.
thread_local bool ended = false;

struct Registration {
    bool ready;

    Registration() {
        const lumoStatus status = lumoInitialize();
        ready = status == lumoNoError;
        int device = 0;
        lumoGetExecutingDevice(&device);
        const std::string found = ready ? describeDevice(device) : describe(status);
        const std::lock_guard<std::mutex> lock(textMutex);
        text() = found;
    }
    ~Registration() {
        ended = true;
        lumoShutdown();
    }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;
};

}  // namespace

const std::string& platformName() {
    static const auto& name = *new std::string(findPlatform());
    return name;
}

bool threadIsReady() {
    if (ended) return false;
    thread_local const Registration registration;
    return registration.ready;
}

std::string deviceText() {
    const std::lock_guard<std::mutex> lock(textMutex);
    return text();
}

}  // namespace lumo::dropin
