#include "platform/software/streams.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "platform/software/control.h"

namespace software {
namespace {

struct Pending {
    platform::Stream stream;
    Operation operation;
    std::uint64_t number;      // in order of issue, from 1 on
    std::uint64_t behind = 0;  // the number of what another stream has to run before
};

struct Streams {
    // Held while operations run in strict mode, so that the device is one machine for all
    // threads; recursive, because an operation may be submitted while another runs.
    std::recursive_mutex mutex;
    std::list<Pending> pending;  // of all streams, in order of issue
    std::set<platform::Stream> live;
    std::map<platform::Event, std::uint64_t> recorded;  // of the live events, 0 for none
    std::uintptr_t created = 0;
    std::uint64_t issued = 0;
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

void append(platform::Stream stream, Operation operation, std::uint64_t behind = 0) {
    streams().pending.push_back({stream, std::move(operation), ++streams().issued, behind});
}

// Runs an operation after all that it has to wait for, and no more.
void runThrough(std::uint64_t number) {
    auto& pending = streams().pending;
    const auto target = std::find_if(pending.begin(), pending.end(),
                                     [&](const Pending& p) { return p.number == number; });
    if (target == pending.end()) return;
    // The default stream is a barrier in both directions: once its last operation before this one
    // has to run, so has everything issued before that.
    const platform::Stream stream = target->stream;
    const auto end = std::next(target);
    const auto barrier = std::find_if(std::make_reverse_iterator(end), pending.rend(),
                                      [](const Pending& p) { return !p.stream; });
    const std::uint64_t all = barrier == pending.rend() ? 0 : barrier->number;
    for (;;) {
        const auto next = std::find_if(pending.begin(), pending.end(), [&](const Pending& p) {
            return p.number <= all || p.stream == stream;
        });
        if (next == pending.end() || next->number > number) return;
        if (next->behind) {
            runThrough(std::exchange(next->behind, 0));
            continue;
        }
        const Operation operation = std::move(next->operation);
        pending.erase(next);
        run(operation);
    }
}

}  // namespace

bool runsAtOnce(std::size_t work) {
    return inProduction() && isNextInLine(work);
}

void submit(platform::Stream stream, Operation operation) {
    if (inProduction()) return enqueue(stream, std::move(operation));
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    if (schedule() == Schedule::earliest) return run(operation);
    append(stream, std::move(operation));
}

void drain(platform::Stream stream) {
    if (inProduction()) return finish(stream);
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    const auto& pending = streams().pending;
    const auto last = std::find_if(pending.rbegin(), pending.rend(),
                                   [&](const Pending& p) { return p.stream == stream; });
    if (last != pending.rend()) runThrough(last->number);
}

void drainAll() {
    if (inProduction()) return finishAll();
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    const auto& pending = streams().pending;
    while (!pending.empty()) runThrough(pending.front().number);
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
    return int(streams().live.size() + streams().recorded.size());
}

platform::Event createEvent() {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    platform::Event event = reinterpret_cast<platform::Event>(++streams().created);
    streams().recorded.emplace(event, 0);
    return event;
}

bool isEvent(platform::Event event) {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    return streams().recorded.count(event) != 0;
}

bool destroyEvent(platform::Event event) {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    return streams().recorded.erase(event) != 0;
}

// In production and on the earliest schedule what was issued earlier has run, or will have, before
// what is issued later.
void recordEvent(platform::Event event, platform::Stream stream) {
    if (schedule() != Schedule::latest) return;
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    append(stream, {[](std::size_t) {}, 1, 0});
    streams().recorded[event] = streams().issued;
}

void waitForEvent(platform::Stream stream, platform::Event event) {
    const Operation mark{[](std::size_t) {}, 1, 0};
    if (schedule() != Schedule::latest) return submit(stream, mark);
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    append(stream, mark, streams().recorded[event]);
}

void resetStreams() {
    std::lock_guard<std::recursive_mutex> lock(streams().mutex);
    streams().pending.clear();
    streams().live.clear();
    streams().recorded.clear();
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
