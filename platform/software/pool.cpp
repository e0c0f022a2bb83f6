#include "platform/software/pool.h"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/software/control.h"

namespace software {
namespace {

using Clock = std::chrono::steady_clock;

// Below this many elementary operations work is over before a thread has woken; before one that is
// awake has taken its part.
constexpr std::size_t worthWaking = 1 << 18, worthSharing = 1 << 17;
constexpr std::size_t muchWork = 1 << 22;
// More operations than follow a panel.
constexpr std::uint64_t farAhead = 32;
// So long workers look for more before they sleep: waking one can take longer than its work. The
// same for a caller who waits for the last items.
constexpr auto patience = std::chrono::microseconds(100);

class Queue;

// Items that threads take one after the other. Its counters but `next` are under the pool's mutex.
struct Job {
    void (*item)(const void*, std::size_t) = nullptr;
    const void* context = nullptr;
    std::size_t count = 0;
    Queue* queue = nullptr;  // whose owner may join in
    bool heads = false;      // it is the first of that queue
    std::atomic<std::size_t> next{0};
    int inside = 0;  // threads that may still be at an item

    bool hasMore() const { return next.load(std::memory_order_relaxed) < count; }
    void work() {
        for (std::size_t k; (k = next.fetch_add(1, std::memory_order_relaxed)) < count;)
            item(context, k);
    }
};

void pause() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#else
    sched_yield();
#endif
}

// Nobody waits for a worker that has not joined in: on a busy machine one may wake late. Whoever
// waits for a job takes what nobody has begun, so at most the items that were begun are waited for.
class Pool {
  public:
    // Makes do with fewer workers, or none, where the system gives no more threads.
    explicit Pool(int workers) {
        try {
            for (int i = 0; i < workers; ++i) {
                std::thread worker([this] { serve(); });
                handles_.push_back(worker.native_handle());
                worker.detach();
            }
        } catch (const std::system_error&) {
        }
    }

    bool alone() const { return handles_.empty(); }
    bool isWorthSharing(std::size_t work) const {
        return work >= (asleep_.load(std::memory_order_relaxed) ? worthWaking : worthSharing);
    }

    // Runs a job with whoever joins in.
    void run(Job& job) {
        std::unique_lock<std::mutex> lock(mutex_);
        open(job);
        ++job.inside;
        lock.unlock();
        job.work();
        lock.lock();
        leave(job);
        await(lock, [&] { return job.inside == 0; });
    }

    void append(Queue& queue, platform::Stream stream, Operation operation);
    void await(Queue& queue, std::uint64_t ticket);

  private:
    void open(Job& job) {
        open_.push_back(&job);
        ++opened_;
        if (asleep_ == 0) return;
        stepAside();
        if (job.count > 2)
            wake_.notify_all();
        else
            wake_.notify_one();
    }

    // A thread that has found nothing left to take goes.
    void leave(Job& job);

    Job* findOpen(const Queue* of) const {
        const auto at = std::find_if(open_.begin(), open_.end(), [&](const Job* job) {
            return job->hasMore() && (!of || job->queue == of);
        });
        return at == open_.end() ? nullptr : *at;
    }

    void help(Job& job, std::unique_lock<std::mutex>& lock);

    template <class Done>
    void await(std::unique_lock<std::mutex>& lock, Done done) {
        if (done()) return;
        const auto end = Clock::now() + patience;
        const std::uint64_t seen = changes_;
        lock.unlock();
        while (changes_ == seen && Clock::now() < end) pause();
        lock.lock();
        done_.wait(lock, done);
    }

    void serve() {
        for (;;) {
            const auto end = Clock::now() + patience;
            const std::uint64_t seen = opened_;
            while (opened_ == seen && Clock::now() < end) pause();
            std::unique_lock<std::mutex> lock(mutex_);
            Job* job = findOpen(nullptr);
            if (!job && opened_ == seen) {
                ++asleep_;
                wake_.wait(lock, [&] { return (job = findOpen(nullptr)) != nullptr; });
                --asleep_;
            }
            while (job) {
                help(*job, lock);
                job = findOpen(nullptr);
            }
        }
    }

    // A woken thread is put beside its waker where the other processors look busy, and the threads
    // of a CPU BLAS, which poll for a while after a call, look so. So workers are kept off the
    // caller's processor; pollers give way to them.
    void stepAside() {
        const int cpu = sched_getcpu();
        cpu_set_t others;
        if (cpu == cpu_ || sched_getaffinity(0, sizeof others, &others) != 0) return;
        cpu_ = cpu;
        if (CPU_COUNT(&others) > 1) CPU_CLR(cpu, &others);
        for (pthread_t worker : handles_) pthread_setaffinity_np(worker, sizeof others, &others);
    }

    std::vector<pthread_t> handles_;
    int cpu_ = -1;

    std::mutex mutex_;
    std::condition_variable wake_, done_;
    std::vector<Job*> open_;  // that may have items left
    // Looked at without the lock: jobs opened, and changes of what a caller may wait for.
    std::atomic<std::uint64_t> opened_{0}, changes_{0};
    std::atomic<int> asleep_{0};
};

// What a thread has issued. Only the first operation is open to the workers.
class Queue {
  public:
    Queue() = default;
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;
    // A call that fails half-way may leave something; a thread that ends waits for it.
    ~Queue();

    struct Entry {
        Operation operation;
        Job job;
    };

    // Of the last operation of a stream, or of all.
    std::uint64_t ticketOf(platform::Stream stream) const {
        for (const auto& [of, ticket] : last_)
            if (of == stream) return ticket;
        return 0;
    }
    std::uint64_t issued() const { return issued_; }
    std::uint64_t pending() const { return issued_ - completed_; }
    bool done(std::uint64_t ticket) const {
        return completed_.load(std::memory_order_acquire) >= ticket;
    }
    void issue(platform::Stream stream, std::size_t work) {
        pendingWork_.fetch_add(work, std::memory_order_relaxed);
        ++issued_;
        // Streams come and go with their calls; what has ended need not be remembered.
        last_.erase(
            std::remove_if(last_.begin(), last_.end(),
                           [&](const auto& l) { return l.first == stream || done(l.second); }),
            last_.end());
        last_.emplace_back(stream, issued_);
    }
    void complete(std::size_t work) {
        pendingWork_.fetch_sub(work, std::memory_order_relaxed);
        completed_.fetch_add(1, std::memory_order_release);
    }
    std::size_t pendingWork() const { return pendingWork_.load(std::memory_order_relaxed); }

    std::deque<Entry> entries;  // under the pool's mutex

  private:
    std::vector<std::pair<platform::Stream, std::uint64_t>> last_;
    std::uint64_t issued_ = 0;
    std::atomic<std::uint64_t> completed_{0};
    std::atomic<std::size_t> pendingWork_{0};
};

// The queue whose operation this thread works at, its own or another's.
thread_local Queue* served = nullptr;

void Pool::help(Job& job, std::unique_lock<std::mutex>& lock) {
    ++job.inside;
    lock.unlock();
    Queue* const before = std::exchange(served, job.queue);
    job.work();
    served = before;
    lock.lock();
    leave(job);
}

void Pool::leave(Job& job) {
    const auto at = std::find(open_.begin(), open_.end(), &job);
    if (at != open_.end()) open_.erase(at);
    if (--job.inside > 0) return;
    if (job.heads) {
        Queue& queue = *job.queue;
        const std::size_t work = queue.entries.front().operation.work;
        queue.entries.pop_front();  // and the job with it
        queue.complete(work);
        if (!queue.entries.empty()) open(queue.entries.front().job);
    }
    ++changes_;
    done_.notify_all();
}

void Pool::append(Queue& queue, platform::Stream stream, Operation operation) {
    std::lock_guard<std::mutex> lock(mutex_);
    queue.issue(stream, operation.work);
    auto& entry = queue.entries.emplace_back();
    entry.operation = std::move(operation);
    entry.job.item = [](const void* f, std::size_t k) {
        (*static_cast<const std::function<void(std::size_t)>*>(f))(k);
    };
    entry.job.context = &entry.operation.item;
    entry.job.count = entry.operation.count;
    entry.job.queue = &queue;
    entry.job.heads = true;
    if (queue.entries.size() == 1) open(entry.job);
}

void Pool::await(Queue& queue, std::uint64_t ticket) {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!queue.done(ticket))
        if (Job* job = findOpen(&queue))
            help(*job, lock);
        else
            await(lock, [&] { return queue.done(ticket) || findOpen(&queue); });
}

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

Queue::~Queue() {
    if (!done(issued())) pool().await(*this, issued());
}

Queue& mine() {
    thread_local Queue queue;
    return queue;
}

}  // namespace

void parallel(std::size_t count, std::size_t work, void (*item)(const void*, std::size_t),
              const void* context) {
    if (count < 2 || threads() == 1 || pool().alone() || !pool().isWorthSharing(work)) {
        for (std::size_t k = 0; k < count; ++k) item(context, k);
        return;
    }
    Job job;
    job.item = item;
    job.context = context;
    job.count = count;
    job.queue = served ? served : &mine();
    pool().run(job);
}

// A chain of small operations behind one that is not much larger, as for each column of a
// reduction, is the caller's, who helps with the larger one first: handed on, each would cost more
// than it takes. A mark (no work) and what follows much work is queued, but a caller who is far
// ahead helps.
bool isNextInLine(std::size_t work) {
    if (threads() == 1 || pool().alone()) return true;
    if (pool().isWorthSharing(work)) return false;
    Queue& queue = mine();
    if (queue.done(queue.issued())) return true;
    if (work == 0 || (queue.pendingWork() > muchWork && queue.pending() < farAhead)) return false;
    pool().await(queue, queue.issued());
    return true;
}

void enqueue(platform::Stream stream, Operation operation) {
    if (isNextInLine(operation.work))
        for (std::size_t k = 0; k < operation.count; ++k) operation.item(k);
    else
        pool().append(mine(), stream, std::move(operation));
}

void finish(platform::Stream stream) {
    Queue& queue = mine();
    const std::uint64_t ticket = queue.ticketOf(stream);
    if (!queue.done(ticket)) pool().await(queue, ticket);
}

void finishAll() {
    Queue& queue = mine();
    if (!queue.done(queue.issued())) pool().await(queue, queue.issued());
}

}  // namespace software
