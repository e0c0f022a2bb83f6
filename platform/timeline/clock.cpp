#include "platform/timeline/clock.h"

#include <algorithm>
#include <iterator>

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

Reached Clock::add(double start, double end, Kind kind, int cause) {
    activities_.push_back({start, end, kind, cause});
    return {end, int(activities_.size()) - 1};
}

Reached Clock::copy(Engine engine, Kind kind, double seconds, Reached ready, double latency) {
    ready.include(engines_[engine]);
    ready.include({host_.end + latency, host_.last});
    return engines_[engine] = add(ready.end, ready.end + seconds, kind, ready.last);
}

Reached Clock::kernel(Kind kind, Load load, Reached ready, double latency, double gap) {
    if (ready.last >= 0 && isKernel(activities_[std::size_t(ready.last)].kind)) ready.end += gap;
    ready.include({host_.end + latency, host_.last});
    processors_.forgetBefore(host_.end);
    const auto [start, end] = processors_.take(ready, load, gap, int(activities_.size()));
    return add(start.end, end, kind, start.last);
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

Clock::Use Clock::use() const {
    std::vector<Activity> kernels;
    std::copy_if(activities_.begin(), activities_.end(), std::back_inserter(kernels),
                 [](const Activity& a) { return isKernel(a.kind); });
    std::stable_sort(kernels.begin(), kernels.end(),
                     [](const Activity& a, const Activity& b) { return a.start < b.start; });
    Use use;
    double until = 0;
    for (const Activity& a : kernels) {
        if (a.start > until) follow({a.start, a.cause}, until, use.idle);
        use.busy[int(a.kind)] += std::max(0., a.end - std::max(a.start, until));
        until = std::max(until, a.end);
    }
    follow(host_, until, use.idle);
    return use;
}

}  // namespace timeline
