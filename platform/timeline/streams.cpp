// Streams, events, the device and its errors.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/error_texts.h"
#include "platform/timeline/state.h"

namespace timeline {
namespace {

// A handle that nothing lies behind.
void* newHandle() {
    return reinterpret_cast<void*>(++state().handles);
}

bool isStream(platform::Stream stream) {
    return !stream || state().streams.count(stream);
}

int notice(const Reached& reached) {
    State& s = state();
    ++s.counts.waits;
    s.clock.wait(reached, s.machine.synchronize);
    return cudaSuccess;
}

}  // namespace

int runtimeGetVersion(int* version) {
    *version = 3020;
    return cudaSuccess;
}

int driverGetVersion(int* version) {
    *version = 3020;
    return cudaSuccess;
}

int getDeviceCount(int* count) {
    *count = 1;
    return cudaSuccess;
}

int getDeviceProperties(platform::DeviceProperties* properties, int device) {
    if (device != 0) return reported(cudaErrorInvalidDevice);
    const Machine& m = state().machine;
    platform::DeviceProperties p{};
    std::snprintf(p.name, sizeof p.name, "%s", m.name.c_str());
    p.totalGlobalMem = std::size_t(m.memory);
    p.sharedMemPerBlock = 49152;
    p.regsPerBlock = 65536;
    p.warpSize = 32;
    p.memPitch = 2147483647;
    p.maxThreadsPerBlock = 1024;
    p.maxThreadsDim[0] = p.maxThreadsDim[1] = 1024;
    p.maxThreadsDim[2] = 64;
    const int capability = int(std::lround(m.capability * 10));
    p.maxGridSize[0] = capability >= 30 ? 2147483647 : 65535;
    p.maxGridSize[1] = p.maxGridSize[2] = 65535;
    p.clockRate = 1000000;
    p.totalConstMem = 65536;
    p.major = capability / 10;
    p.minor = capability % 10;
    p.textureAlignment = 256;
    p.deviceOverlap = 1;
    p.multiProcessorCount = std::max(1, int(m.processors));
    p.canMapHostMemory = 1;
    *properties = p;
    return cudaSuccess;
}

int setDevice(int device) {
    return reported(device == 0 ? cudaSuccess : cudaErrorInvalidDevice);
}

int getDevice(int* device) {
    *device = 0;
    return cudaSuccess;
}

// That a stream or an event is kept for the next call costs next to nothing.
int streamCreate(platform::Stream* stream) {
    *stream = newHandle();
    state().streams[*stream] = {};
    return cudaSuccess;
}

// Processors go to what is issued first: who issues the urgent first need not say so.
int urgentStreamCreate(platform::Stream* stream) {
    return streamCreate(stream);
}

// What it was given goes on: the default stream stands for it.
int streamDestroy(platform::Stream stream) {
    State& s = state();
    const auto found = s.streams.find(stream);
    if (!stream || found == s.streams.end()) return reported(cudaErrorInvalidResourceHandle);
    s.streams[nullptr].include(found->second);
    s.streams.erase(found);
    return cudaSuccess;
}

int streamSynchronize(platform::Stream stream) {
    const Entry entry;
    if (!isStream(stream)) return reported(cudaErrorInvalidResourceHandle);
    return notice(reachedBy(stream));
}

int threadSynchronize() {
    const Entry entry;
    return notice(reachedBy(nullptr));
}

int eventCreate(platform::Event* event) {
    *event = newHandle();
    state().events[*event] = {};
    return cudaSuccess;
}

int eventDestroy(platform::Event event) {
    return reported(state().events.erase(event) ? cudaSuccess : cudaErrorInvalidResourceHandle);
}

int eventRecord(platform::Event event, platform::Stream stream) {
    const auto found = state().events.find(event);
    if (found == state().events.end() || !isStream(stream))
        return reported(cudaErrorInvalidResourceHandle);
    found->second = reachedBy(stream);
    return cudaSuccess;
}

int streamWaitEvent(platform::Stream stream, platform::Event event, unsigned /*flags*/) {
    State& s = state();
    const auto found = s.events.find(event);
    if (found == s.events.end() || !isStream(stream))
        return reported(cudaErrorInvalidResourceHandle);
    s.streams[stream].include(found->second);
    return cudaSuccess;
}

int getLastError() {
    const int error = state().cudaError;
    state().cudaError = cudaSuccess;
    return error;
}

const char* getErrorString(int error) {
    return platform::errorText(error);
}

}  // namespace timeline
