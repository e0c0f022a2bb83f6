#include "runtime/hooks.h"

#include <atomic>

#include "common/threads.h"

namespace lumo {
namespace {

Hook hooks[4];
// Spares compute calls the mutex while no hook is set, which is nearly always.
std::atomic<bool> anySet{false};

Hook& hookAt(HookPoint point) {
    return hooks[static_cast<int>(point)];
}

}  // namespace

void setHook(HookPoint point, Hook hook) {
    boost::mutex::scoped_lock lock(runtimeMutex());
    hookAt(point) = std::move(hook);
    if (hookAt(point)) anySet = true;
}

bool hooksAreSet() {
    return anySet;
}

void runHook(HookPoint point) {
    if (!anySet) return;
    Hook hook;
    {
        // A copy, since a hook may call the library, which takes the mutex, and a shutdown on
        // another thread may clear the original meanwhile.
        boost::mutex::scoped_lock lock(runtimeMutex());
        hook = hookAt(point);
    }
    if (hook) hook();
}

void clearHooks() {
    for (auto point : {HookPoint::hostCallBegin, HookPoint::hostCallEnd, HookPoint::deviceCallBegin,
                       HookPoint::deviceCallEnd})
        hookAt(point).clear();
    anySet = false;
}

}  // namespace lumo
