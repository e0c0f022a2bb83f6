// Calls of Lumo's functions: the calling thread is registered first, failures become exceptions.
// Nothing here needs the interpreter's lock.
#pragma once

#include "lumo.h"
#include "lumo_thread.h"

namespace lumo::python {

// Registers the thread at its first call; it leaves when it ends. Throws as `check` does.
void registerThread();

// Throws for any status but 0, with what the library says about it: std::invalid_argument (7),
// std::bad_alloc (5) or std::runtime_error. Python sees a ValueError, MemoryError, RuntimeError.
void check(lumoStatus status);

// Calls a function of Lumo. Returns the info of a data error: where in the data; 0 for success.
template <class Function, class... Arguments>
int call(Function* function, Arguments... arguments) {
    registerThread();
    const lumoStatus status = function(arguments...);
    if (status == lumoDataError) return lumoGetThreadErrorInfo();
    check(status);
    return 0;
}

}  // namespace lumo::python
