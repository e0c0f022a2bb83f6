// The threads that have initialised the library, and the mutex that guards the runtime's state.
#pragma once

#include <boost/thread/mutex.hpp>

namespace lumo {

// Serialises initialisation, shutdown and buffer release; guards the threads and the hooks.
boost::mutex& runtimeMutex();

// The calling thread's kernel thread id. Throws std::runtime_error if there is none.
int threadId();

// The rest expects the runtime mutex to be held.
void registerThread(int id);
void unregisterThread(int id);
unsigned registeredThreads();
void forgetThreads();

}  // namespace lumo
