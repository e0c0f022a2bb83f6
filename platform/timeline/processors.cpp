#include "platform/timeline/processors.h"

#include <algorithm>
#include <cmath>

namespace timeline {
namespace {

constexpr double nothing = 1e-6;  // of the processors

}  // namespace

// The level that begins at this time.
Processors::Levels::iterator Processors::split(double time) {
    const auto before = std::prev(levels_.upper_bound(time));
    return before->first == time ? before : levels_.emplace(time, before->second).first;
}

void Processors::forgetBefore(double time) {
    levels_.erase(levels_.begin(), std::prev(levels_.upper_bound(std::max(0., time))));
}

std::pair<Reached, double> Processors::take(Reached ready, Load load, double gap, int activity) {
    const double share = std::max(load.share, nothing);
    auto level = std::prev(levels_.upper_bound(ready.end));
    if (level->second.free <= nothing) {
        while (level->second.free <= nothing) ++level;  // the last one is free
        ready = {level->first + gap, level->second.last};
    }
    double time = ready.end, left = load.seconds;
    for (bool through = left <= 0; !through;) {
        const auto here = split(time), next = std::next(here);
        const double use = here->second.free > nothing ? std::min(share, here->second.free) : 0;
        const double until = next == levels_.end() ? INFINITY : next->first;
        const double wanted = use > 0 ? time + left * share / use : INFINITY;
        through = wanted <= until;
        const double end = through ? wanted : until;
        if (wanted < until) split(end)->second.last = activity;
        here->second.free -= use;
        left -= (end - time) * use / share;
        time = end;
    }
    return {ready, time};
}

}  // namespace timeline
