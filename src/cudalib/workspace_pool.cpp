#include "cudalib/workspace_pool.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <vector>

#include "common/threads.h"
#include "cudalib/managed_memory.h"

namespace cudalib {
namespace {

using Block = ManagedMemory<unsigned char, CudaAllocator>;

// Blocks are whole pages of this many bytes, so that their extent fits 32 bits.
constexpr unsigned page = 4096;

struct Held {
    Block block;
    bool inUse;
};

struct Pools {
    std::mutex mutex;
    std::map<int, std::vector<Held>> ofThread;
};

// Never destroyed: what is still held at exit is left to the system.
Pools& pools() {
    static auto* instance = new Pools;
    return *instance;
}

bool isIdle(const Held& held) {
    return !held.inUse;
}

// Moves idle blocks from a pool to `out`, which frees them when the lock is no longer held.
void takeIdle(std::vector<Held>& pool, std::vector<Held>& out) {
    auto idle = std::partition(pool.begin(), pool.end(), std::not_fn(isIdle));
    out.insert(out.end(), idle, pool.end());
    pool.erase(idle, pool.end());
}

Held* bestFit(std::vector<Held>& pool, std::size_t bytes) {
    Held* best = nullptr;
    for (Held& held : pool) {
        const std::size_t size = held.block.bytes();
        if (held.inUse || size < bytes || size > std::max<std::size_t>(2 * bytes, page)) continue;
        if (!best || size < best->block.bytes()) best = &held;
    }
    return best;
}

}  // namespace

void* WorkspacePool::acquire(std::size_t bytes) {
    if (bytes == 0) return nullptr;
    const std::size_t pages = (bytes - 1) / page + 1;
    if (pages > 0xFFFFFFFFu) throw std::runtime_error("Memory Pool: bad request");
    const int thread = lumo::threadId();
    {
        std::lock_guard<std::mutex> lock(pools().mutex);
        if (Held* held = bestFit(pools().ofThread[thread], bytes)) {
            held->inUse = true;
            return held->block.data();
        }
    }
    // Not under the lock: a failing allocation empties the pools.
    Block block({page, unsigned(pages)});
    std::lock_guard<std::mutex> lock(pools().mutex);
    pools().ofThread[thread].push_back({block, true});
    return block.data();
}

// Destructors call this: it must do without host memory.
void WorkspacePool::release(void* buffer) {
    if (!buffer) return;
    std::optional<Held> dropped;  // freed when the lock is no longer held
    std::lock_guard<std::mutex> lock(pools().mutex);
    auto pool = pools().ofThread.find(lumo::threadId());
    if (pool == pools().ofThread.end()) throw std::runtime_error("MemoryPool: empty");
    std::vector<Held>& all = pool->second;
    auto isIt = [&](const Held& h) { return h.inUse && h.block.data() == buffer; };
    auto held = std::find_if(all.begin(), all.end(), isIt);
    if (held == all.end()) throw std::runtime_error("MemoryPool: empty");
    held->inUse = false;

    if (std::size_t(std::count_if(all.begin(), all.end(), isIdle)) <= heldAtMost) return;
    auto smallest = std::min_element(all.begin(), all.end(), [](const Held& a, const Held& b) {
        return std::make_pair(a.inUse, a.block.bytes()) < std::make_pair(b.inUse, b.block.bytes());
    });
    dropped = std::move(*smallest);
    all.erase(smallest);
}

void WorkspacePool::releaseIdleOfThisThread() {
    std::vector<Held> dropped;
    std::lock_guard<std::mutex> lock(pools().mutex);
    auto pool = pools().ofThread.find(lumo::threadId());
    if (pool == pools().ofThread.end()) return;
    takeIdle(pool->second, dropped);
    if (pool->second.empty()) pools().ofThread.erase(pool);
}

bool WorkspacePool::releaseIdle() {
    std::vector<Held> dropped;
    std::lock_guard<std::mutex> lock(pools().mutex);
    for (auto pool = pools().ofThread.begin(); pool != pools().ofThread.end();) {
        takeIdle(pool->second, dropped);
        pool = pool->second.empty() ? pools().ofThread.erase(pool) : std::next(pool);
    }
    return !dropped.empty();
}

}  // namespace cudalib
