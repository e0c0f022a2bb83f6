#include "platform/software/pool.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/software/control.h"

namespace software {
namespace {

// Below this many elementary operations a kernel is over before a thread has woken.
constexpr std::size_t worthWaking = 1 << 18;

// The CPU BLAS has threads of its own that spin for a while after each call, so a worker may wake
// late. Nobody waits for one that has not joined in: when the caller finds nothing left to take,
// the job is closed.
class Pool {
  public:
    // Makes do with fewer workers, or none, where the system gives no more threads.
    explicit Pool(int workers) {
        try {
            for (int i = 0; i < workers; ++i) std::thread([this] { serve(); }).detach();
        } catch (const std::system_error&) {
        }
    }

    // One job at a time: a second caller is told false and works alone.
    bool run(std::size_t count, void (*item)(const void*, std::size_t), const void* context) {
        std::unique_lock<std::mutex> running(job_, std::try_to_lock);
        if (!running) return false;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            item_ = item;
            context_ = context;
            count_ = count;
            next_ = 0;
            open_ = true;
        }
        wake_.notify_all();
        work();
        std::unique_lock<std::mutex> lock(mutex_);
        open_ = false;
        done_.wait(lock, [this] { return working_ == 0; });
        return true;
    }

  private:
    void work() {
        for (std::size_t k; (k = next_.fetch_add(1, std::memory_order_relaxed)) < count_;)
            item_(context_, k);
    }

    void serve() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            wake_.wait(lock, [this] { return open_; });
            ++working_;
            lock.unlock();
            work();
            lock.lock();
            open_ = false;  // nothing is left to take
            if (--working_ == 0) done_.notify_one();
        }
    }

    std::mutex job_;
    std::mutex mutex_;
    std::condition_variable wake_, done_;
    void (*item_)(const void*, std::size_t) = nullptr;
    const void* context_ = nullptr;
    std::size_t count_ = 0;
    std::atomic<std::size_t> next_{0};
    bool open_ = false;
    int working_ = 0;
};

std::atomic<Pool*> thePool{nullptr};

// The workers do not survive a fork: the child makes its own, and leaves the parent's copy of
// the pool, whose locks may be held, alone.
Pool& pool() {
    static std::mutex making;
    static const int atFork = pthread_atfork([] { making.lock(); }, [] { making.unlock(); },
                                             [] {
                                                 thePool = nullptr;
                                                 making.unlock();
                                             });
    (void)atFork;
    if (Pool* made = thePool) return *made;
    std::lock_guard<std::mutex> lock(making);
    if (!thePool) thePool = new Pool(threads() - 1);  // never destroyed: its threads never end
    return *thePool;
}

}  // namespace

int threads() {
    static const int count = [] {
        if (const char* wish = std::getenv("LUMO_SOFTWARE_THREADS"))
            if (const int n = std::atoi(wish); n > 0) return n;
        cpu_set_t mine;
        if (sched_getaffinity(0, sizeof mine, &mine) == 0) return std::max(1, CPU_COUNT(&mine));
        return std::max(1, int(std::thread::hardware_concurrency()));
    }();
    return count;
}

void parallel(std::size_t count, std::size_t work, void (*item)(const void*, std::size_t),
              const void* context) {
    if (count > 1 && work >= worthWaking && threads() > 1 && pool().run(count, item, context))
        return;
    for (std::size_t k = 0; k < count; ++k) item(context, k);
}

}  // namespace software
