// What lanes do together beyond a block's barriers: exchange in a warp, atomic operations and
// fences, barriers of grids and clusters.
#include <numeric>

#include "platform/cuda/emulation/selftest.h"

namespace selftest {
namespace {

class Meeting : public EmulatedGpu {};

TEST_F(Meeting, WarpsExchangeNumbers) {
    auto run = [](Fault fault) {
        Device<int> in(upTo(64)), out(64);
        launch(kernel(Name::warpSums, fault), 1, 64, in.get(), out.get());
        return out.host();
    };
    const std::vector<int> sums = run(Fault::none);
    for (std::size_t i = 0; i < 64; ++i) EXPECT_EQ(i < 32 ? 496 : 1520, sums[i]) << i;
    seeded("exchange", [&] { run(Fault::absentLane); });
}

TEST_F(Meeting, WarpsVoteAndMatch) {
    Device<int> in(upTo(32));
    Device<unsigned> out(6 * 32);
    launch(kernel(Name::warpVotes), 1, 32, in.get(), out.get());
    const std::vector<unsigned> result = out.host();
    for (unsigned i = 0; i < 32; ++i) {
        const unsigned* row = &result[std::size_t(6) * i];
        EXPECT_EQ(0xaaaaaaaau, row[0]);
        EXPECT_EQ(0xfu << (i / 4 * 4), row[1]);
        EXPECT_EQ(1u + 2u + 4u, row[2]);
        EXPECT_EQ(i < 16 ? 120u : 376u, row[3]);
        EXPECT_EQ(31u, row[4]);
        EXPECT_EQ(2u, row[5]);
    }
}

TEST_F(Meeting, WarpsHaveBarriers) {
    auto run = [](Fault fault) {
        Device<int> in(upTo(64)), out(64);
        launch(kernel(Name::warpNeighbours, fault), 1, 64, in.get(), out.get());
        return out.host();
    };
    EXPECT_EQ(33, run(Fault::none)[32]);
    seeded("race", [&] { run(Fault::noWarpBarrier); });
}

TEST_F(Meeting, AtomicOperations) {
    constexpr int n = 1000;
    auto run = [](Fault fault) {
        Device<int> in(upTo(n));
        Device<unsigned> bins(std::vector<unsigned>(8, 0));
        Device<Extremes> extremes(std::vector<Extremes>{{-1, n, 0, -1, 0, 0, 0, 0}});
        launch(kernel(Name::histogram, fault), 3, 64, n, in.get(), bins.get(), extremes.get());
        if (fault != Fault::none) return;
        const std::vector<unsigned> counts = bins.host();
        for (unsigned count : counts) EXPECT_EQ(unsigned(n / 8), count);
        const Extremes e = extremes.host()[0];
        EXPECT_EQ(n - 1, e.largest);
        EXPECT_EQ(0, e.least);
        EXPECT_EQ(499500ull, e.sum);
        EXPECT_EQ(static_cast<long long>(n - 1) << 33, e.wide);
        EXPECT_EQ(499500.0, e.real);
        EXPECT_EQ(499500.0f, e.single);
        EXPECT_EQ(0xffffffffu, e.bits);
        EXPECT_EQ(1, e.seen);
    };
    run(Fault::none);
    seeded("race", [&] { run(Fault::noAtomic); });
}

// Fences make what was written known with the number that says so.
TEST_F(Meeting, LocksAndTickets) {
    auto locked = [](Fault fault) {
        Device<int> lock(std::vector<int>{0}), sum(std::vector<int>{0});
        launchCooperative(kernel(Name::locked, fault), 7, 32, lock.get(), sum.get());
        return sum.host()[0];
    };
    auto ticket = [](Fault fault) {
        Device<int> in(upTo(9)), parts(9), out(1);
        Device<unsigned> ticket(std::vector<unsigned>{0});
        launch(kernel(Name::lastBlockSums, fault), 9, 32, in.get(), parts.get(), ticket.get(),
               out.get());
        return out.host()[0];
    };
    EXPECT_EQ(7, locked(Fault::none));
    EXPECT_EQ(36, ticket(Fault::none));
    seeded("race", [&] { locked(Fault::noFence); });
    seeded("race", [&] { ticket(Fault::noFence); });
}

TEST_F(Meeting, GridsHaveBarriers) {
    auto run = [](Fault fault) {
        Device<int> parts(5), out(5);
        EXPECT_EQ(cudaSuccess, launchCooperative(kernel(Name::gridNeighbours, fault), 5, 64,
                                                 parts.get(), out.get()));
        return out.host();
    };
    EXPECT_EQ((std::vector<int>{6, 9, 12, 15, 3}), run(Fault::none));
    seeded("race", [&] { run(Fault::noGridBarrier); });
    Device<int> parts(5), out(5);
    seeded("memory", [&] {  // a barrier of the grid in a launch that is not cooperative: a trap
        launch(kernel(Name::gridNeighbours), 5, 64, parts.get(), out.get());
    });
    seeded("launch", [&] {
        EXPECT_EQ(
            cudaErrorCooperativeLaunchTooLarge,
            launchCooperative(kernel(Name::gridNeighbours), 5000, 1024, parts.get(), out.get()));
    });
}

TEST_F(Meeting, ClustersShareTheirMemory) {
    constexpr unsigned blocks = 8, cluster = 4;
    auto run = [](Fault fault) {
        Device<int> in(upTo(32 * blocks)), out(32 * blocks);
        EXPECT_EQ(cudaSuccess, launchClusters(kernel(Name::clusterSums, fault), blocks, 32, cluster,
                                              in.get(), out.get()));
        return out.host();
    };
    const std::vector<int> sums = run(Fault::none);
    for (unsigned b = 0; b < blocks; ++b)
        for (unsigned i = 0; i < 32; ++i) {
            const unsigned first = b / cluster * cluster;
            unsigned sum = 0;
            for (unsigned rank = 0; rank < cluster; ++rank) sum += 32 * (first + rank) + i;
            EXPECT_EQ(int(sum + 1000 * (b % cluster)), sums[std::size_t(32) * b + i]);
        }
    // Without the barrier a lane comes to memory that is not written, or races with who writes it.
    EXPECT_EQ(0, emulatedGpuFindings(nullptr));
    run(Fault::noClusterBarrier);
    EXPECT_GT(emulatedGpuFindings("race") + emulatedGpuFindings("uninitialised"), 0);
    emulatedGpuForgive();
    seeded("memory", [] {
        Device<int> in(upTo(32 * blocks)), out(32 * blocks);
        launchClusters(kernel(Name::clusterSums, Fault::leavesCluster), blocks, 32, cluster,
                       in.get(), out.get());
        cudaDeviceSynchronize();
    });
    Device<int> in(upTo(32 * blocks)), out(32 * blocks);
    seeded("launch",
           [&] { launchClusters(kernel(Name::clusterSums), blocks, 32, 3, in.get(), out.get()); });
}

}  // namespace
}  // namespace selftest
