#include "platform/cuda/emulation/knowledge.h"

#include <algorithm>

#include "platform/cuda/emulation/races.h"
#include "platform/cuda/emulation/team.h"

namespace emulated {
namespace {

LaneKnowledge& knowledgeOf(Lane& lane) {
    if (!lane.knowledge) {
        lane.block->knowledge.push_back(std::make_unique<LaneKnowledge>());
        lane.knowledge = lane.block->knowledge.back().get();
    }
    return *lane.knowledge;
}

void learnPending(LaneKnowledge& k) {
    if (k.pending.of.empty()) return;
    auto more = std::make_shared<Knowledge>();
    if (k.known) *more = *k.known;
    more->join(k.pending);
    k.known = std::move(more);
    k.pending.of.clear();
}

bool acquires(Order order) {
    return order == Order::acquire || order == Order::acq_rel;
}
bool releases(Order order) {
    return order == Order::release || order == Order::acq_rel;
}

}  // namespace

void Seen::join(const Seen& other) {
    before = std::max(before, other.before);
    if (other.epoch > epoch) {
        epoch = other.epoch;
        lanes = other.lanes;
    } else if (other.epoch == epoch) {
        for (uint32_t lane : other.lanes)
            if (std::find(lanes.begin(), lanes.end(), lane) == lanes.end()) lanes.push_back(lane);
    }
}

void Knowledge::join(const Knowledge& other) {
    for (const auto& [block, seen] : other.of) of[block].join(seen);
}

bool Knowledge::covers(uint64_t s) const {
    auto it = of.find(stamp::block(s));
    if (it == of.end()) return false;
    const Seen& seen = it->second;
    if (stamp::earlier(stamp::epoch(s), seen.before)) return true;
    return stamp::epoch(s) == stamp::wrappedEpoch(seen.epoch) &&
           std::find(seen.lanes.begin(), seen.lanes.end(), stamp::lane(s)) != seen.lanes.end();
}

void Lane::fence() {
    LaneKnowledge& k = knowledgeOf(*this);
    learnPending(k);
    if (k.known) k.fenced = *k.known;
    k.fenced.of[stamp::block(stamp)].join({block->epoch, block->epoch, {linear}});
}

void Lane::readStrongly(const void* q, Order order) {
    auto it = team->published.find(q);
    if (it == team->published.end()) return;
    LaneKnowledge& k = knowledgeOf(*this);
    k.pending.join(it->second);
    if (acquires(order)) learnPending(k);
}

void Lane::writeStrongly(const void* q, Order order) {
    team->progress = true;
    if (releases(order)) fence();
    if (knowledge && !knowledge->fenced.of.empty())
        team->published[q] = knowledge->fenced;
    else
        team->published.erase(q);
}

void Lane::changed(const void* q, Order order, bool different) {
    team->progress = team->progress || different;
    readStrongly(q, order);
    if (releases(order)) fence();
    if (knowledge && !knowledge->fenced.of.empty()) team->published[q].join(knowledge->fenced);
}

void shareKnowledge(const std::vector<Block*>& blocks, bool betweenBlocks) {
    auto all = std::make_shared<Knowledge>();
    for (Block* block : blocks) {
        for (const auto& k : block->knowledge)
            if (k->known) all->join(*k->known);
        if (betweenBlocks) all->of[stamp::blockKey(block->number)].join({block->epoch, 0, {}});
    }
    if (all->of.empty()) return;
    for (Block* block : blocks)
        for (Lane& lane : block->lanes) knowledgeOf(lane).known = all;
}

}  // namespace emulated
