#include "platform/blas_threads.h"

#include <dlfcn.h>

#include <atomic>
#include <mutex>

#include "platform/cpu/blas.h"

namespace platform {
namespace {

using Get = int (*)();
using Set = void (*)(int);
using SetLocal = int (*)(int);  // returns what it was; 0 takes it back

// A number of the process's (set), or of each thread's (setLocal).
struct Switch {
    Get get = nullptr;
    Set set = nullptr;
    SetLocal setLocal = nullptr;
};

template <class Function>
Function find(void* library, const char* name) {
    return reinterpret_cast<Function>(dlsym(library, name));
}

Get openmpGet = nullptr;
Set openmpSet = nullptr;

Switch find() {
    // The library that the products come from: a process may hold several.
    Dl_info provider;
    void* library = dladdr(reinterpret_cast<const void*>(&cpu::sgemm_), &provider)
                        ? dlopen(provider.dli_fname, RTLD_LAZY | RTLD_NOLOAD)
                        : nullptr;
    if (!library) return {};
    if (auto setLocal = find<SetLocal>(library, "MKL_Set_Num_Threads_Local"))
        return {find<Get>(library, "MKL_Get_Max_Threads"), nullptr, setLocal};
    auto get = find<Get>(library, "openblas_get_num_threads");
    auto set = find<Set>(library, "openblas_set_num_threads");
    constexpr int openmp = 2;
    auto kind = find<Get>(library, "openblas_get_parallel");
    if (get && set && kind && kind() == openmp) {
        // It does what OpenMP says in the calling thread.
        openmpGet = find<Get>(library, "omp_get_max_threads");
        openmpSet = find<Set>(library, "omp_set_num_threads");
        if (!openmpGet || !openmpSet) return {};
        return {openmpGet, nullptr, [](int wish) {
                    const int before = openmpGet();
                    openmpSet(wish);
                    return before;
                }};
    }
    if (get && set) return {get, set, nullptr};
    get = find<Get>(library, "bli_thread_get_num_threads");
    set = find<Set>(library, "bli_thread_set_num_threads");
    if (get && set) return {get, set, nullptr};
    return {};
}

const Switch& theSwitch() {
    static const Switch found = find();
    return found;
}

struct Users {
    std::mutex mutex;
    std::atomic<int> count{0};  // written under the mutex
    int saved = 1;
};
Users& users() {
    static auto* instance = new Users;
    return *instance;
}

}  // namespace

OneBlasThread::OneBlasThread() {
    const Switch& s = theSwitch();
    if (s.setLocal) {
        saved_ = s.setLocal(1);
    } else if (s.set) {
        Users& all = users();
        if (all.count.load(std::memory_order_acquire) == 0 && s.get() == 1) return;
        std::lock_guard<std::mutex> lock(all.mutex);
        counted_ = true;
        if (all.count == 0) {
            all.saved = s.get();
            if (all.saved != 1) s.set(1);
        }
        ++all.count;
    }
}

OneBlasThread::~OneBlasThread() {
    const Switch& s = theSwitch();
    if (s.setLocal) {
        s.setLocal(saved_);
    } else if (counted_) {
        Users& all = users();
        std::lock_guard<std::mutex> lock(all.mutex);
        // First the number: who sees no users looks at it.
        if (all.count == 1 && all.saved != 1 && s.get() == 1) s.set(all.saved);
        all.count.fetch_sub(1, std::memory_order_release);
    }
}

int blasThreads() {
    const Switch& s = theSwitch();
    if (!s.get) return 0;
    // While others are at it, the number is not the application's.
    Users& all = users();
    std::lock_guard<std::mutex> lock(all.mutex);
    return all.count > 0 && s.set ? all.saved : s.get();
}

}  // namespace platform
