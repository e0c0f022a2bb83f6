// A CUDA plugin that has what a test's environment says, for the choice of the platform.
#include <cstdlib>
#include <cstring>

#include "platform/table.h"

namespace {

int number(const char* variable, int otherwise) {
    const char* word = std::getenv(variable);
    return word ? std::atoi(word) : otherwise;
}

int lastError = 0;

int result(int error) {
    return error ? lastError = error : 0;
}

int succeed() {
    return 0;
}

platform::Table makeTable() {
    platform::Table t{};
    t.version = unsigned(number("FAKE_TABLE_VERSION", platform::tableVersion));
    t.name = "cuda";
    t.runtimeGetVersion = [](int* version) {
        *version = 13000;
        return 0;
    };
    t.driverGetVersion = [](int* version) {
        *version = number("FAKE_DRIVER_VERSION", 13000);
        return 0;
    };
    t.getDeviceCount = [](int* count) {
        *count = number("FAKE_DEVICES", 1);
        return result(number("FAKE_COUNT_ERROR", 0));
    };
    t.getDeviceProperties = [](platform::DeviceProperties* p, int) {
        *p = {};
        std::strcpy(p->name, "Fake");
        p->major = 9;
        return 0;
    };
    t.setDevice = [](int) { return 0; };
    t.getDevice = [](int* device) {
        *device = 0;
        return 0;
    };
    t.threadSynchronize = succeed;
    t.getLastError = [] {
        const int error = lastError;
        lastError = 0;
        return error;
    };
    t.getErrorString = [](int) { return "fake error"; };
    t.cublasInit = succeed;
    t.cublasShutdown = succeed;
    t.cublasGetError = succeed;
    return t;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const platform::Table* lumoPlatformTable(
    unsigned version) {
    if (version != platform::tableVersion) return nullptr;
    static const platform::Table table = makeTable();
    return &table;
}
