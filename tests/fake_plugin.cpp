// A CUDA plugin that has what a test's environment says, for the choice of the platform.
#include <cstdlib>
#include <utility>

#include "platform/table.h"

namespace {

int number(const char* variable, int otherwise) {
    const char* word = std::getenv(variable);
    return word ? std::atoi(word) : otherwise;
}

int lastError = 0;

int answer(int* to, int value) {
    *to = value;
    return 0;
}
int succeed() {
    return 0;
}

platform::Table makeTable() {
    platform::Table t{};
    t.version = unsigned(number("FAKE_TABLE_VERSION", platform::tableVersion));
    t.name = "cuda";
    t.runtimeGetVersion = [](int* version) { return answer(version, 13000); };
    t.driverGetVersion = [](int* version) {
        return answer(version, number("FAKE_DRIVER_VERSION", 13000));
    };
    t.getDeviceCount = [](int* count) {
        answer(count, number("FAKE_DEVICES", 1));
        return lastError = number("FAKE_COUNT_ERROR", 0);
    };
    t.getDeviceProperties = [](platform::DeviceProperties* p, int) {
        *p = {};
        p->major = 9;
        return 0;
    };
    t.setDevice = [](int) { return 0; };
    t.getDevice = [](int* device) { return answer(device, 0); };
    t.threadSynchronize = succeed;
    t.getLastError = [] { return std::exchange(lastError, 0); };
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
