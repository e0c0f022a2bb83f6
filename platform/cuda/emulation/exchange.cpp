// What the lanes of a warp do together: once all that an exchange names are at it, each gets its
// result.
#include <algorithm>

#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/team.h"

namespace emulated {
namespace {

void complain(const Team& team, const Lane& lane, const char* what) {
    if (firstTime(Kind::exchange, team.kernel().name, what))
        found(Kind::exchange, "%s: %s, block %llu lane %u", what, team.kernel().name,
              static_cast<unsigned long long>(lane.block->number), lane.linear);
}

// The lanes of a warp that take part, by their place in it.
struct Group {
    Lane* at[32] = {};
    uint32_t members = 0;
};

template <class T, class F>
uint32_t folded(const Group& group, F f) {
    bool first = true;
    T all = 0;
    for (const Lane* lane : group.at) {
        if (!lane) continue;
        const T value = T(uint32_t(lane->offered.value));
        all = first ? value : T(f(all, value));
        first = false;
    }
    return uint32_t(all);
}

// A lane whose number another one takes, and whether it lies in the part that the exchange allows;
// otherwise a lane takes its own.
void shuffle(const Team& team, const Group& group, Lane& lane) {
    const auto& o = lane.offered;
    const uint32_t part = o.clamp >> 8 & 31, self = lane.laneId();
    const int limit = int((self & part) | (o.clamp & 31 & ~part)), by = int(o.where & 31);
    int from = 0;
    switch (o.kind) {
        case Exchange::up:
            from = int(self) - by;
            break;
        case Exchange::down:
            from = int(self) + by;
            break;
        case Exchange::bfly:
            from = int(self) ^ by;
            break;
        default:
            from = int((self & part) | (uint32_t(by) & ~part));
    }
    lane.takenFlag = o.kind == Exchange::up ? from >= limit : from <= limit;
    if (!lane.takenFlag) from = int(self);
    if (!group.at[from]) complain(team, lane, "a lane takes the number of one that takes no part");
    lane.taken = uint32_t((group.at[from] ? group.at[from] : &lane)->offered.value);
}

void vote(const Group& group, Lane& lane) {
    uint32_t set = 0;
    for (const Lane* l : group.at)
        if (l && l->offered.value) set |= 1u << l->laneId();
    lane.taken = set;
    const bool none = set == 0, all = set == group.members;
    lane.takenFlag = lane.offered.kind == Exchange::any   ? !none
                     : lane.offered.kind == Exchange::all ? all
                                                          : none || all;
}

void match(const Group& group, Lane& lane) {
    uint32_t equal = 0;
    for (const Lane* l : group.at)
        if (l && l->offered.value == lane.offered.value) equal |= 1u << l->laneId();
    lane.takenFlag = equal == group.members;
    lane.taken = lane.offered.kind == Exchange::matchAny || lane.takenFlag ? equal : 0;
}

void take(const Team& team, const Group& group, Lane& lane) {
    using E = Exchange;
    switch (lane.offered.kind) {
        case E::sync:
            return;
        case E::up:
        case E::down:
        case E::bfly:
        case E::idx:
            return shuffle(team, group, lane);
        case E::any:
        case E::all:
        case E::uni:
        case E::ballot:
            return vote(group, lane);
        case E::matchAny:
        case E::matchAll:
            return match(group, lane);
        case E::sum:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return a + b; });
            return;
        case E::least:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return std::min(a, b); });
            return;
        case E::leastSigned:
            lane.taken = folded<int32_t>(group, [](auto a, auto b) { return std::min(a, b); });
            return;
        case E::largest:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return std::max(a, b); });
            return;
        case E::largestSigned:
            lane.taken = folded<int32_t>(group, [](auto a, auto b) { return std::max(a, b); });
            return;
        case E::bitAnd:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return a & b; });
            return;
        case E::bitOr:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return a | b; });
            return;
        case E::bitXor:
            lane.taken = folded<uint32_t>(group, [](auto a, auto b) { return a ^ b; });
    }
}

}  // namespace

bool Team::settleWarps(Block& block) {
    bool any = false;
    for (std::size_t first = 0; first < block.lanes.size(); first += 32)
        if (settleWarp(block, first, std::min(first + 32, block.lanes.size()))) any = true;
    return any;
}

// The first exchange of a warp that is complete.
bool Team::settleWarp(Block& block, std::size_t first, std::size_t end) {
    for (std::size_t l = first; l < end; ++l) {
        Lane& lane = block.lanes[l];
        if (lane.stop != Stop::warp) continue;
        const auto& o = lane.offered;
        if (!(o.mask >> lane.laneId() & 1))
            complain(*this, lane, "a lane that its exchange does not name");
        Group group;
        bool complete = true;
        for (unsigned i = 0; i < 32 && complete; ++i) {
            if (!(o.mask >> i & 1)) continue;
            if (first + i >= end || block.lanes[first + i].stop == Stop::exited) {
                complain(*this, lane, "an exchange with a lane that is not there");
                continue;
            }
            Lane& other = block.lanes[first + i];
            // One that waits at another exchange may still come to this one.
            complete = other.stop == Stop::warp && other.state == lane.state &&
                       other.offered.mask == o.mask;
            group.at[i] = &other;
            group.members |= 1u << i;
        }
        if (!complete) continue;
        if (!group.members) group.at[lane.laneId()] = &lane;
        std::size_t living = 0;
        for (std::size_t i = first; i < end; ++i) living += block.lanes[i].stop != Stop::exited;
        if (o.kind == Exchange::sync && std::size_t(__builtin_popcount(group.members)) == living)
            ++block.warpEpochs[first / 32];
        for (Lane* member : group.at)
            if (member) take(*this, group, *member);
        for (Lane* member : group.at)
            if (member) member->stop = Stop::spin;
        return true;
    }
    return false;
}

}  // namespace emulated
