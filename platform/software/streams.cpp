#include "platform/software/streams.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <list>
#include <mutex>
#include <set>

#include "platform/software/control.h"

namespace software {
namespace {

struct Pending {
    platform::Stream stream;
    Operation operation;
};

struct Streams {
    // Held while operations run in strict mode, so that the device is one machine for all
    // threads; recursive, because an operation may be submitted while another runs.
    std::recursive_mutex mutex;
    std::list<Pending> pending;  // of all streams, in order of issue
    std::set<platform::Stream> live;
    std::uintptr_t created = 0;
    std::atomic<int> error{0};
};

Streams& streams() {
    static auto* instance = new Streams;  // never destroyed, like everything calls at exit reach
    return *instance;
}

bool inProduction() {
    return schedule() == Schedule::production;
}

void run(const Operation& operation) {
    parallelFor(operation.count, operation.work, operation.item);
}

void runFirst(std::list<Pending>& pending, std::list<Pending>::iterator at) {
    const Operation operation = std::move(at->operation);
    pending.erase(at);
    run(operation);
}

}  // namespace

bool runsAtOnce(std::size_t work) {
    return inProduction() && isNextInLine(work);
}

void submit(platform::Stream stream, Operation operation) {
    if (inProduction()) return enqueue(stream, std::move(operation));
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    if (schedule() == Schedule::earliest) return run(operation);
    streams().pending.push_back({stream, std::move(operation)});
}

void drain(platform::Stream stream) {
    if (inProduction()) return finish(stream);
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    auto& pending = streams().pending;
    auto of = [](platform::Stream s) { return [s](const Pending& p) { return p.stream == s; }; };
    // The default stream is a barrier in both directions: once its last operation before the
    // stream's last one has to run, so has everything issued before that.
    auto last = std::find_if(pending.rbegin(), pending.rend(), of(stream));
    if (last == pending.rend()) return;
    auto barrier = std::find_if(last, pending.rend(), of(nullptr));
    for (auto left = std::distance(barrier, pending.rend()); left > 0; --left)
        runFirst(pending, pending.begin());
    for (;;) {
        auto next = std::find_if(pending.begin(), pending.end(), of(stream));
        if (next == pending.end()) return;
        runFirst(pending, next);
    }
}

void drainAll() {
    if (inProduction()) return finishAll();
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    auto& pending = streams().pending;
    while (!pending.empty()) runFirst(pending, pending.begin());
}

platform::Stream createStream() {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    // A handle is a number that never comes back, since pending operations may outlive it.
    platform::Stream stream = reinterpret_cast<platform::Stream>(++streams().created);
    streams().live.insert(stream);
    return stream;
}

bool isStream(platform::Stream stream) {
    if (!stream) return true;
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    return streams().live.count(stream) != 0;
}

bool destroyStream(platform::Stream stream) {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    return streams().live.erase(stream) != 0;
}

int liveStreams() {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    return int(streams().live.size());
}

void resetStreams() {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    streams().pending.clear();
    streams().live.clear();
    streams().error = 0;
}

void failAsynchronously(int error) {
    int none = 0;
    streams().error.compare_exchange_strong(none, error);
}

int takeAsynchronousError() {
    return streams().error.load(std::memory_order_relaxed) ? streams().error.exchange(0) : 0;
}

}  // namespace software
