#include "common/state.h"

#include <atomic>

namespace lumo {
namespace {

// Relaxed: with several threads calling, whose result is read is nobody's promise.
std::atomic<int> theStatus{lumoNoError};
std::atomic<int> theInfo{0};

// The same two as this thread alone knows them.
thread_local lumoStatus statusOfThread = lumoNoError;
thread_local int infoOfThread = 0;

std::atomic<bool> isInitialized{false};
std::atomic<bool> hasDoublePrecision{false};
std::atomic<int> capability{-1};

}  // namespace

lumoStatus lastStatus() {
    return lumoStatus(theStatus.load(std::memory_order_relaxed));
}

void setLastStatus(lumoStatus status) {
    theStatus.store(status, std::memory_order_relaxed);
    statusOfThread = status;
}

int info() {
    return theInfo.load(std::memory_order_relaxed);
}

void setInfo(int info) {
    theInfo.store(info, std::memory_order_relaxed);
    infoOfThread = info;
}

lumoStatus threadStatus() {
    return statusOfThread;
}

int threadInfo() {
    return infoOfThread;
}

lumoStatus refuse(lumoStatus status) {
    setLastStatus(status);
    infoOfThread = 0;
    return status;
}

bool initialized() {
    return isInitialized.load(std::memory_order_acquire);
}

void setInitialized(bool yes) {
    isInitialized.store(yes, std::memory_order_release);
}

bool doublePrecision() {
    return hasDoublePrecision.load(std::memory_order_relaxed);
}

int computeCapability() {
    return capability.load(std::memory_order_relaxed);
}

void setDeviceAbilities(int value) {
    hasDoublePrecision.store(value > 12, std::memory_order_relaxed);
    capability.store(value, std::memory_order_relaxed);
}

void resetState() {
    setInitialized(false);
    setDeviceAbilities(-1);
    setLastStatus(lumoNoError);
    setInfo(0);
}

}  // namespace lumo
