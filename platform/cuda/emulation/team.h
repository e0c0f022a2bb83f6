// A launch's blocks being run: lane by lane, each until it ends or waits, in the order that was
// asked for, then whatever the waiting ones are waiting for, as far as it has come about.
//
// Blocks that may meet run at the same time: those of a cluster, and all of a cooperative launch.
// All others run one after another, as a GPU with a single multiprocessor might run them.
#pragma once

#include <cuda_runtime_api.h>

#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/cuda/emulation/kernel.h"
#include "platform/cuda/emulation/knowledge.h"

namespace emulated {

struct Launch {
    const Kernel* kernel;
    Shape shape;
    std::vector<unsigned char> parameters;
    uint32_t sharedBytes;  // dynamic ones as well
    int device;
    bool cooperative;
};

struct Block {
    uint64_t number;
    uint32_t rank;  // in its cluster
    uint32_t epoch;
    std::vector<uint32_t> warpEpochs;
    std::vector<Lane> lanes;
    std::vector<unsigned char> registers, shared, sharedWritten;
    std::vector<Shadow> sharedShadow;
    std::vector<std::unique_ptr<LaneKnowledge>> knowledge;

    bool left() const;  // all its lanes have ended
};

class Team {
  public:
    explicit Team(const Launch& launch);
    void run();

    const Kernel& kernel() const { return *launch_.kernel; }
    Block* ofCluster(const Block& mate, uint32_t rank);

    // What strong writes have told, by where.
    std::unordered_map<const void*, Knowledge> published;
    bool progress = false;  // since the last round

  private:
    void runAtOnce(const std::vector<uint64_t>& blocks);
    void prepare(Block& block, uint64_t number);
    void place(Lane& lane, const Block& block, std::size_t index) const;
    void resume(Lane& lane);
    void runAlone(Block& block);
    bool settle();
    bool settleBarrier(Block& block);
    bool settleClusters();
    bool settleWarps(Block& block);
    bool settleWarp(Block& block, std::size_t first, std::size_t end);
    [[noreturn]] void waitForEver();

    const Launch& launch_;
    Lane fresh_{};
    uint64_t number_;
    std::vector<std::unique_ptr<Block>> blocks_;  // reused
    std::size_t live_ = 0;                        // of them at present
    bool met_[5] = {};                            // for what reasons lanes have stopped
};

// A fault in a kernel, which ends the launch.
struct KernelFault {};

}  // namespace emulated
