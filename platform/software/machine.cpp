// The machine that the software device plays, its devices and its one context.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/software/device.h"
#include "platform/software/instruments.h"
#include "platform/software/streams.h"

namespace software {
namespace {

struct State {
    Machine machine;
    std::vector<platform::DeviceProperties> properties;  // of its devices
    std::atomic<Schedule> schedule{Schedule::production};

    std::mutex mutex;  // the context's binding
    std::atomic<int> chosen{0};
    std::atomic<bool> explicitlyChosen{false};
    std::atomic<bool> bound{false};
};

State& state() {
    static auto* instance = new State;
    return *instance;
}

Schedule scheduleFromEnvironment() {
    const char* word = std::getenv("LUMO_SOFTWARE_STRICT");
    if (!word || !*word) return Schedule::production;
    if (std::strcmp(word, "earliest") == 0) return Schedule::earliest;
    if (std::strcmp(word, "latest") == 0) return Schedule::latest;
    std::fprintf(stderr, "lumo: LUMO_SOFTWARE_STRICT is \"earliest\" or \"latest\"; ignored\n");
    return Schedule::production;
}

std::size_t physicalMemory() {
    return std::size_t(sysconf(_SC_PHYS_PAGES)) * std::size_t(sysconf(_SC_PAGESIZE));
}

platform::DeviceProperties propertiesOf(const DeviceDescription& d) {
    const bool fermi = d.major >= 2;
    platform::DeviceProperties p{};
    std::snprintf(p.name, sizeof p.name, "%s", d.name.c_str());
    p.totalGlobalMem = d.memory;
    p.sharedMemPerBlock = fermi ? 49152 : 16384;
    p.regsPerBlock = fermi ? 32768 : d.minor >= 2 ? 16384 : 8192;
    p.warpSize = 32;
    p.memPitch = 2147483647;
    p.maxThreadsPerBlock = fermi ? 1024 : 512;
    p.maxThreadsDim[0] = p.maxThreadsDim[1] = p.maxThreadsPerBlock;
    p.maxThreadsDim[2] = 64;
    std::copy(d.maxGrid.begin(), d.maxGrid.end(), p.maxGridSize);
    p.clockRate = d.clockRate;
    p.totalConstMem = 65536;
    p.major = d.major;
    p.minor = d.minor;
    p.textureAlignment = 256;
    p.deviceOverlap = d.deviceOverlap;
    p.multiProcessorCount = d.multiprocessors;
    p.canMapHostMemory = 1;
    return p;
}

void begin(const Machine& description, Schedule schedule) {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    resetStreams();
    resetInstruments();
    resetBlas();
    s.machine = description;
    s.properties.clear();
    for (const DeviceDescription& device : description.devices)
        s.properties.push_back(propertiesOf(device));
    s.schedule = schedule;
    s.chosen = 0;
    s.explicitlyChosen = false;
    s.bound = false;
    std::size_t memory = 0;
    for (const auto& device : description.devices) memory = std::max(memory, device.memory);
    const bool production = schedule == Schedule::production;
    deviceHeap().reset(production ? Heap::Mode::reuse : Heap::Mode::strictSeparate, memory / 4);
    pageLockedHeap().reset(production ? Heap::Mode::reuse : Heap::Mode::strict, memory / 16);
    resetAccounts();
}

std::once_flag firstStart;

// The process's first call starts the default machine, unless a test has started another.
State& started() {
    std::call_once(firstStart, [] { begin(defaultMachine(), scheduleFromEnvironment()); });
    return state();
}

}  // namespace

Machine defaultMachine() {
    DeviceDescription device;
    device.memory = physicalMemory() / 2;
    device.multiprocessors = threads();
    return {{device}, 3020, 3020, true};
}

void start(const Machine& machine, Schedule schedule) {
    std::call_once(firstStart, [] {});  // no default machine must take this one's place later
    begin(machine, schedule);
}

Schedule schedule() {
    return started().schedule.load(std::memory_order_relaxed);
}

const Machine& machine() {
    return started().machine;
}

int bindContext() {
    State& s = started();
    if (s.bound.load(std::memory_order_acquire)) return cudaSuccess;
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.machine.devices.empty()) return cudaErrorNoDevice;
    s.bound = true;
    return cudaSuccess;
}

int currentDevice() {
    return started().chosen.load(std::memory_order_relaxed);
}

int runtimeGetVersion(int* version) {
    return call("cudaRuntimeGetVersion", [&] {
        *version = machine().runtimeVersion;
        return cudaSuccess;
    });
}

int driverGetVersion(int* version) {
    return call("cudaDriverGetVersion", [&] {
        *version = machine().driverVersion;
        return cudaSuccess;
    });
}

int getDeviceCount(int* count) {
    return call("cudaGetDeviceCount", [&] {
        *count = int(machine().devices.size());
        return cudaSuccess;
    });
}

const platform::DeviceProperties& propertiesOf(int device) {
    return started().properties[std::size_t(device)];
}

int getDeviceProperties(platform::DeviceProperties* properties, int device) {
    auto body = [&] {
        if (device < 0 || device >= int(machine().devices.size())) return cudaErrorInvalidDevice;
        *properties = propertiesOf(device);
        return cudaSuccess;
    };
    return call("cudaGetDeviceProperties", body, device);
}

int setDevice(int device) {
    auto body = [&] {
        State& s = started();
        std::lock_guard<std::mutex> lock(s.mutex);
        if (s.machine.devices.empty()) return cudaErrorNoDevice;
        if (device < 0 || device >= int(s.machine.devices.size())) return cudaErrorInvalidDevice;
        if (s.bound) return cudaErrorSetOnActiveProcess;
        s.chosen = device;
        s.explicitlyChosen = true;
        return cudaSuccess;
    };
    return call("cudaSetDevice", body, device);
}

int getDevice(int* device) {
    auto body = [&] {
        if (machine().devices.empty()) return cudaErrorNoDevice;
        *device = currentDevice();
        return cudaSuccess;
    };
    return call("cudaGetDevice", body);
}

int streamCreate(platform::Stream* stream) {
    auto body = [&] {
        if (int error = bindContext()) return error;
        *stream = createStream();
        return int(cudaSuccess);
    };
    return call("cudaStreamCreate", body);
}

int urgentStreamCreate(platform::Stream* stream) {
    return streamCreate(stream);
}

int streamDestroy(platform::Stream stream) {
    auto body = [&] {
        return destroyStream(stream) ? cudaSuccess : cudaErrorInvalidResourceHandle;
    };
    return call<OnFault::perform>("cudaStreamDestroy", body, stream);
}

int streamSynchronize(platform::Stream stream) {
    auto body = [&] {
        if (!isStream(stream)) return int(cudaErrorInvalidResourceHandle);
        drain(stream);
        return takeAsynchronousError();
    };
    return call<OnFault::perform>("cudaStreamSynchronize", body, stream);
}

int eventCreate(platform::Event* event) {
    auto body = [&] {
        if (int error = bindContext()) return error;
        *event = createEvent();
        return int(cudaSuccess);
    };
    return call("cudaEventCreate", body);
}

int eventDestroy(platform::Event event) {
    auto body = [&] { return destroyEvent(event) ? cudaSuccess : cudaErrorInvalidResourceHandle; };
    return call<OnFault::perform>("cudaEventDestroy", body, event);
}

int eventRecord(platform::Event event, platform::Stream stream) {
    auto body = [&] {
        if (!isEvent(event) || !isStream(stream)) return cudaErrorInvalidResourceHandle;
        recordEvent(event, stream);
        return cudaSuccess;
    };
    return call("cudaEventRecord", body, event, stream);
}

int streamWaitEvent(platform::Stream stream, platform::Event event, unsigned flags) {
    auto body = [&] {
        if (!isEvent(event) || !isStream(stream)) return cudaErrorInvalidResourceHandle;
        waitForEvent(stream, event);
        return cudaSuccess;
    };
    return call("cudaStreamWaitEvent", body, stream, event, flags);
}

int threadSynchronize() {
    auto body = [&] {
        // A device that was asked for by number is taken for good here; a mere synchronisation
        // of a process that has chosen nothing leaves the choice open.
        if (started().explicitlyChosen) bindContext();
        drainAll();
        if (schedule() == Schedule::production) return takeAsynchronousError();
        if (deviceHeap().takeDamage() + pageLockedHeap().takeDamage() > 0) {
            noteViolation("a write beyond the ends of a block");
            failAsynchronously(cudaErrorLaunchFailure);
        }
        return takeAsynchronousError();
    };
    return call<OnFault::perform>("cudaThreadSynchronize", body);
}

}  // namespace software
