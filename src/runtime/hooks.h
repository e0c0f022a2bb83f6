// Callbacks around compute calls, for a layer that embeds the library. None is set by default.
#pragma once

#include <boost/function.hpp>

namespace lumo {

using Hook = boost::function<void()>;

enum class HookPoint { hostCallBegin, hostCallEnd, deviceCallBegin, deviceCallEnd };

void setHook(HookPoint point, Hook hook);
bool hooksAreSet();
// Calls the hook on the calling thread; an empty one is skipped.
void runHook(HookPoint point);
// Expects the runtime mutex to be held, or no other thread to be in the library.
void clearHooks();

}  // namespace lumo
