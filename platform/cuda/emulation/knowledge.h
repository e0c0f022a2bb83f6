// What a lane knows of the accesses of lanes in other blocks, or of its own block without a barrier
// between: it has read, with a fence behind it, what another lane wrote with a fence before it.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/cuda/emulation/lane.h"

namespace emulated {

// Of a block: all accesses before its barrier `before`, and those of some lanes until its barrier
// `epoch`.
struct Seen {
    uint32_t before = 0, epoch = 0;
    std::vector<uint32_t> lanes;

    void join(const Seen& other);
};

struct Knowledge {
    std::unordered_map<uint64_t, Seen> of;  // by block

    void join(const Knowledge& other);
    bool covers(uint64_t stamp) const;
};

struct LaneKnowledge {
    std::shared_ptr<const Knowledge> known;  // lanes that meet at a barrier share it
    Knowledge fenced;                        // what the lane knew, and had done, at its last fence
    Knowledge pending;                       // what it has read since, which a fence makes known
};

// At a barrier every lane of the blocks learns what each of them knows. At one between blocks also
// all that the blocks have done.
void shareKnowledge(const std::vector<Block*>& blocks, bool betweenBlocks);

}  // namespace emulated
