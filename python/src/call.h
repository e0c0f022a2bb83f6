// Calls of Lumo's functions: the calling thread is registered first, failures become exceptions.
// Nothing here needs the interpreter's lock.
#pragma once

#include "lumo.h"

namespace lumo::python {

// Registers the thread at its first call; it leaves when it ends. Throws as `check` does.
void registerThread();

// Throws for any status but 0, with what the library says about it: std::invalid_argument (7),
// std::bad_alloc (5) or std::runtime_error. Python sees a ValueError, MemoryError, RuntimeError.
void check(lumoStatus status);

// Calls a function of Lumo's. False for a data error: where in the data is for the caller to find
// out, since the library's info word may by now be another thread's.
template <class Function, class... Arguments>
bool call(Function* function, Arguments... arguments) {
    registerThread();
    const lumoStatus status = function(arguments...);
    if (status == lumoDataError) return false;
    check(status);
    return true;
}

}  // namespace lumo::python
