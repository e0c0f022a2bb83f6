#include "common/threads.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <set>
#include <stdexcept>

namespace lumo {
namespace {

// Constructed at load: no thread to run with is a failure of loading (thread_resource_error).
boost::mutex theMutex;

std::set<int>& threads() {
    static auto* instance = new std::set<int>;
    return *instance;
}

unsigned count = 0;

}  // namespace

boost::mutex& runtimeMutex() {
    return theMutex;
}

int threadId() {
    const long id = syscall(SYS_gettid);
    if (id == -1) throw std::runtime_error("Failed to get thread id");
    return int(id);
}

void registerThread(int id) {
    if (threads().insert(id).second) ++count;
}

void unregisterThread(int id) {
    count -= unsigned(threads().erase(id));
}

unsigned registeredThreads() {
    return count;
}

void forgetThreads() {
    threads().clear();
    count = 0;
}

}  // namespace lumo
