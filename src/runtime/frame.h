// What every export runs in: the state of the library, the hooks, and the translation of
// whatever was thrown into a status and an info value. No exception leaves the library.
#pragma once

#include <type_traits>
#include <utility>

#include "common/complex.h"
#include "common/exceptions.h"
#include "common/state.h"
#include "cudalib/exceptions.h"
#include "runtime/hooks.h"

namespace lumo {

// The status of the exception being handled; sets info where the exception tells one, and
// clears the platform's error words, so that the next call is not blamed for this failure.
lumoStatus mapCurrentException() noexcept;

// Runs the body; the status of what it threw, or lumoNoError.
template <class Body>
lumoStatus guarded(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
        return lumoNoError;
    } catch (...) {
        return mapCurrentException();
    }
}

// The frame of an export that needs no initialisation: info zeroed, the body, the device's
// errors, the status stored.
template <class Body>
lumoStatus queryFrame(Body&& body) noexcept {
    setInfo(0);
    const lumoStatus status = guarded([&] {
        body();
        cudalib::synchronizeAndCheck();
    });
    setLastStatus(status);
    return status;
}

// The same for one that needs an initialised library.
template <class Body>
lumoStatus initializedFrame(Body&& body) noexcept {
    if (initialized()) return queryFrame(std::forward<Body>(body));
    return refuse(lumoNotInitialized);
}

struct CallHooks {
    HookPoint begin, end;
};
constexpr CallHooks hostCall{HookPoint::hostCallBegin, HookPoint::hostCallEnd};
constexpr CallHooks deviceCall{HookPoint::deviceCallBegin, HookPoint::deviceCallEnd};

// The frame of every compute export on elements of type T. A body that returns nothing is
// followed by the check of the device's errors; one that returns a status has made that check.
template <class T, class Body>
lumoStatus computeFrame(const CallHooks& hooks, Body&& body) noexcept {
    if (!initialized()) return refuse(lumoNotInitialized);
    if (std::is_same_v<RealOf<T>, double> && !doublePrecision())
        return refuse(lumoInsufficientComputeCapability);
    setInfo(0);
    lumoStatus result = lumoNoError;
    lumoStatus status = guarded([&] {
        runHook(hooks.begin);
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            cudalib::synchronizeAndCheck();
        } else {
            result = body();
        }
    });
    if (status == lumoNoError) status = result;
    // The end hook runs in any case. Its own failure counts unless the call has failed before;
    // calls that a hook makes of its own leave no trace in this one's info.
    const int infoOfCall = status == lumoNoError ? 0 : threadInfo();
    const lumoStatus hookStatus = guarded([&] { runHook(hooks.end); });
    if (status == lumoNoError && hookStatus != lumoNoError)
        status = hookStatus;
    else
        setInfo(infoOfCall);
    setLastStatus(status);
    return status;
}

}  // namespace lumo
