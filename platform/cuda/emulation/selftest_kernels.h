// The kernels of the emulated GPU's own test, by name, with and without faults.
#pragma once

namespace selftest {

enum class Name {
    reverse,
    sumWithoutAtomics,
    misaligned,
    warpSums,
    warpVotes,
    warpNeighbours,
    histogram,
    locked,
    lastBlockSums,
    gridNeighbours,
    clusterSums,
    dynamicReverse,
    spin,
    axpy
};

enum class Fault {
    none,
    noBarrier,
    divergentBarrier,
    uninitialised,
    bounds,
    sharedBounds,
    absentLane,
    noWarpBarrier,
    noAtomic,
    noFence,
    noGridBarrier,
    noClusterBarrier,
    leavesCluster
};

// What `histogram` finds of all numbers.
struct Extremes {
    int largest, least;
    unsigned long long sum;
    long long wide;
    double real;
    float single;
    unsigned bits;
    int seen;
};

// What a kernel is launched by; null for one that is not made with such a fault.
const void* kernel(Name name, Fault fault = Fault::none);

}  // namespace selftest
