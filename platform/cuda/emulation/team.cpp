#include "platform/cuda/emulation/team.h"

#include <algorithm>
#include <numeric>

#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/races.h"
#include "platform/cuda/emulation/settings.h"

namespace emulated {
namespace {

// Rounds in which lanes only look whether something has changed, and nothing does.
constexpr int patience = 100000;

// f(0), ..., f(n - 1) in the order that was asked for.
template <class F>
void ordered(std::size_t n, F f) {
    constexpr std::size_t shuffledAtMost = std::size_t(1) << 22, stride = 1000003;  // a prime
    switch (settings().order) {
        case Sequence::forward:
            for (std::size_t i = 0; i < n; ++i) f(i);
            break;
        case Sequence::reverse:
            for (std::size_t i = n; i > 0; --i) f(i - 1);
            break;
        case Sequence::random:
            if (n > shuffledAtMost) {
                for (std::size_t i = 0; i < n; ++i) f(i * stride % n);
                break;
            }
            std::vector<uint32_t> order(n);
            std::iota(order.begin(), order.end(), 0u);
            std::shuffle(order.begin(), order.end(), randomEngine());
            for (uint32_t i : order) f(i);
    }
}

}  // namespace

bool Block::left() const {
    return std::all_of(lanes.begin(), lanes.end(),
                       [](const Lane& l) { return l.stop == Stop::exited; });
}

Team::Team(const Launch& launch) : launch_(launch), number_(nextLaunch()) {
    fresh_.shape = &launch.shape;
    fresh_.low = 1;  // no allocation has been met
    fresh_.toAlias = deviceMemory().toAlias();
    fresh_.arena = deviceMemory().base();
    fresh_.globalShadow = settings().races ? deviceShadow() : nullptr;
    fresh_.parameters = launch.parameters.data();
    fresh_.parameterBytes = uint32_t(launch.parameters.size());
    fresh_.sharedBytes = launch.sharedBytes;
    fresh_.team = this;
    fresh_.stop = Stop::spin;
}

void Team::run() {
    const Shape& s = launch_.shape;
    if (launch_.cooperative) {
        std::vector<uint64_t> all(s.blocks());
        std::iota(all.begin(), all.end(), uint64_t(0));
        return runAtOnce(all);
    }
    const uint32_t* c = s.cluster;
    const uint64_t wide = s.nctaid[0] / c[0], high = s.nctaid[1] / c[1];
    std::vector<uint64_t> together(s.blocksInCluster());
    ordered(s.blocks() / s.blocksInCluster(), [&](std::size_t cluster) {
        const uint64_t x = cluster % wide * c[0], y = cluster / wide % high * c[1],
                       z = cluster / wide / high * c[2];
        for (std::size_t rank = 0; rank < together.size(); ++rank)
            together[rank] =
                x + rank % c[0] +
                s.nctaid[0] * (y + rank / c[0] % c[1] + s.nctaid[1] * (z + rank / c[0] / c[1]));
        runAtOnce(together);
    });
}

void Team::runAtOnce(const std::vector<uint64_t>& blocks) {
    live_ = blocks.size();
    while (blocks_.size() < live_) blocks_.push_back(std::make_unique<Block>());
    for (std::size_t i = 0; i < live_; ++i) prepare(*blocks_[i], blocks[i]);
    if (launch_.kernel->registerBytes == 0)
        return ordered(live_, [&](std::size_t b) { runAlone(*blocks_[b]); });
    for (int idle = 0;;) {
        progress = false;
        bool ready = false;
        ordered(live_, [&](std::size_t b) {
            Block& block = *blocks_[b];
            ordered(block.lanes.size(), [&](std::size_t l) {
                if (block.lanes[l].stop != Stop::spin) return;
                ready = true;
                resume(block.lanes[l]);
            });
        });
        if (settle()) progress = true;
        idle = progress ? 0 : idle + 1;
        if (ready && idle < patience) continue;
        if (!ready && progress) continue;
        const bool over = std::all_of(blocks_.begin(), blocks_.begin() + std::ptrdiff_t(live_),
                                      [](const auto& b) { return b->left(); });
        if (over) return;
        waitForEver();
    }
}

void Team::prepare(Block& block, uint64_t number) {
    const Shape& s = launch_.shape;
    block.number = number;
    block.epoch = 0;
    block.knowledge.clear();
    const bool alone = launch_.kernel->registerBytes == 0;
    block.lanes.assign(alone ? 1 : s.lanes(), fresh_);
    block.warpEpochs.assign((s.lanes() + 31) / 32, 0);
    block.registers.assign(launch_.kernel->registerBytes * block.lanes.size(), 0xa5);
    constexpr std::size_t alignment = 128;
    block.shared.assign(launch_.sharedBytes + alignment, 0xff);
    block.sharedWritten.assign(launch_.sharedBytes, 0);
    block.sharedShadow.assign(launch_.sharedBytes / 4 + 1, Shadow{});
    auto* shared = reinterpret_cast<unsigned char*>(
        (uintptr_t(block.shared.data()) + alignment - 1) / alignment * alignment);
    for (std::size_t l = 0; l < block.lanes.size(); ++l) {
        Lane& lane = block.lanes[l];
        place(lane, block, l);
        lane.block = &block;
        lane.registers = block.registers.data() + l * launch_.kernel->registerBytes;
        lane.sharedMemory = shared;
        lane.sharedWritten = block.sharedWritten.data();
        lane.sharedShadow = settings().races ? block.sharedShadow.data() : nullptr;
    }
    block.rank = s.rankOf(block.lanes[0].ctaid);
    for (Lane& lane : block.lanes) lane.sharedBase = sharedWindow + block.rank * sharedStride;
}

void Team::place(Lane& lane, const Block& block, std::size_t index) const {
    const Shape& s = launch_.shape;
    lane.ctaid[0] = uint32_t(block.number % s.nctaid[0]);
    lane.ctaid[1] = uint32_t(block.number / s.nctaid[0] % s.nctaid[1]);
    lane.ctaid[2] = uint32_t(block.number / s.nctaid[0] / s.nctaid[1]);
    lane.linear = uint32_t(index);
    lane.tid[0] = uint32_t(index % s.ntid[0]);
    lane.tid[1] = uint32_t(index / s.ntid[0] % s.ntid[1]);
    lane.tid[2] = uint32_t(index / s.ntid[0] / s.ntid[1]);
}

void Team::resume(Lane& lane) {
    const Block& block = *lane.block;
    lane.stamp = stamp::make(number_, block.number, lane.linear, block.epoch,
                             block.warpEpochs[lane.warpId()]);
    lane.stop = launch_.kernel->run(lane);
    if (lane.stop != Stop::spin) progress = true;
    met_[int(lane.stop)] = true;
}

// Lanes that never wait need neither registers nor a state of their own.
void Team::runAlone(Block& block) {
    Lane& lane = block.lanes[0];
    ordered(launch_.shape.lanes(), [&](std::size_t index) {
        place(lane, block, index);
        resume(lane);
    });
}

Block* Team::ofCluster(const Block& mate, uint32_t rank) {
    const uint32_t* c = launch_.shape.cluster;
    auto clusterOf = [&](const Block& b) {
        const uint32_t* at = b.lanes[0].ctaid;
        const Shape& s = launch_.shape;
        const uint64_t row = at[1] / c[1] + uint64_t(s.nctaid[1]) * (at[2] / c[2]);
        return at[0] / c[0] + s.nctaid[0] * row;
    };
    for (std::size_t i = 0; i < live_; ++i)
        if (blocks_[i]->rank == rank && clusterOf(*blocks_[i]) == clusterOf(mate))
            return blocks_[i].get();
    return nullptr;
}

bool Team::settle() {
    bool any = false;
    for (std::size_t i = 0; i < live_; ++i) {
        if (met_[int(Stop::warp)] && settleWarps(*blocks_[i])) any = true;
        if (met_[int(Stop::barrier)] && settleBarrier(*blocks_[i])) any = true;
    }
    if (met_[int(Stop::cluster)] && settleClusters()) any = true;
    return any;
}

// A barrier of the block: for all of its lanes, and the same one.
bool Team::settleBarrier(Block& block) {
    const Lane* first = nullptr;
    bool someLeft = false, same = true;
    for (const Lane& lane : block.lanes) {
        if (lane.stop == Stop::exited) {
            someLeft = true;
        } else if (lane.stop != Stop::barrier) {
            return false;
        } else {
            if (!first) first = &lane;
            same = same && lane.state == first->state;
        }
    }
    if (!first) return false;
    if ((someLeft || !same) && firstTime(Kind::barrier, kernel().name, "divergent"))
        found(Kind::barrier, "lanes of a block part ways at a barrier: %s, block %llu: %s",
              kernel().name, static_cast<unsigned long long>(block.number),
              someLeft ? "some have ended" : "some wait at another one");
    shareKnowledge({&block}, false);
    ++block.epoch;
    for (Lane& lane : block.lanes)
        if (lane.stop == Stop::barrier) lane.stop = Stop::spin;
    return true;
}

// Barriers of clusters: a lane that has ended has arrived.
bool Team::settleClusters() {
    bool any = false;
    const uint32_t size = launch_.shape.blocksInCluster();
    for (std::size_t i = 0; i < live_; ++i) {
        if (blocks_[i]->rank != 0) continue;
        std::vector<Block*> cluster;
        for (uint32_t rank = 0; rank < size; ++rank)
            cluster.push_back(ofCluster(*blocks_[i], rank));
        bool waiting = false, all = true;
        for (Block* block : cluster)
            for (const Lane& lane : block->lanes) {
                waiting = waiting || lane.stop == Stop::cluster;
                all = all && (lane.stop == Stop::exited ||
                              (lane.stop == Stop::cluster && lane.arrivedInCluster));
            }
        if (!waiting || !all) continue;
        any = true;
        for (Block* block : cluster) ++block->epoch;
        shareKnowledge(cluster, true);
        for (Block* block : cluster)
            for (Lane& lane : block->lanes)
                if (lane.stop == Stop::cluster) {
                    lane.stop = Stop::spin;
                    lane.arrivedInCluster = false;
                }
    }
    return any;
}

void Team::waitForEver() {
    const char* where = "for something to change";
    Kind kind = Kind::barrier;
    for (std::size_t i = 0; i < live_; ++i)
        for (const Lane& lane : blocks_[i]->lanes) {
            if (lane.stop == Stop::barrier) where = "at a barrier";
            if (lane.stop == Stop::cluster) where = "for their cluster";
            if (lane.stop != Stop::warp) continue;
            where = "for lanes of their warp, which are at another exchange";
            kind = Kind::exchange;
        }
    found(kind, "lanes wait for ever %s: %s", where, kernel().name);
    setStickyError(cudaErrorLaunchTimeout);
    throw KernelFault();
}

}  // namespace emulated
