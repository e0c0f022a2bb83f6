#include "platform/timeline/clock.h"

#include <algorithm>

namespace timeline {

const char* nameOf(Kind kind) {
    constexpr const char* names[kinds] = {"kernels",
                                          "CUBLAS",
                                          "copies to the GPU",
                                          "copies to the host",
                                          "panels on the CPU",
                                          "the library on the CPU",
                                          "issuing calls",
                                          "allocation",
                                          "latency"};
    return names[int(kind)];
}

void Clock::reset() {
    *this = Clock();
}

void Clock::host(Kind kind, double seconds) {
    if (seconds <= 0) return;
    const double start = host_.end;
    host_.end += seconds;
    // One activity as long as nothing else comes between.
    if (host_.last >= 0) {
        Activity& last = activities_[std::size_t(host_.last)];
        if (last.kind == kind && last.end == start) {
            last.end = host_.end;
            return;
        }
    }
    activities_.push_back({start, host_.end, kind, host_.last});
    host_.last = int(activities_.size()) - 1;
}

Reached Clock::device(Engine engine, Kind kind, double seconds, Reached ready, double latency,
                      double gap) {
    Reached& free = engines_[engine];
    Reached start = ready;
    if (free.last >= 0) start.include({free.end + gap, free.last});
    start.include({host_.end + latency, host_.last});
    if (engine == compute) {
        follow(start, free.end, idle_);
        busy_[int(kind)] += seconds;
    }
    activities_.push_back({start.end, start.end + seconds, kind, start.last});
    free = {start.end + seconds, int(activities_.size()) - 1};
    return free;
}

void Clock::wait(const Reached& reached, double seconds) {
    if (reached.end > host_.end) host_ = reached;
    host(Kind::latency, seconds);
}

// Back from a moment to its cause, to that one's cause, and so on.
void Clock::follow(Reached from, double until, ByKind& times) const {
    double t = from.end;
    for (int k = from.last; t > until;) {
        if (k < 0) {
            times[int(Kind::latency)] += t - until;
            return;
        }
        const Activity& a = activities_[std::size_t(k)];
        const double end = std::clamp(a.end, until, t), start = std::clamp(a.start, until, end);
        times[int(Kind::latency)] += t - end;
        times[int(a.kind)] += end - start;
        t = start;
        k = a.cause;
    }
}

ByKind Clock::criticalPath() const {
    ByKind times{};
    follow(host_, 0, times);
    return times;
}

ByKind Clock::idle() const {
    ByKind times = idle_;
    follow(host_, engines_[compute].end, times);
    return times;
}

}  // namespace timeline
