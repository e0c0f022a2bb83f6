// Small kernels for what a GPU's threads do together, each right and, by a template parameter,
// with the fault that the emulated GPU must find.
#include <cooperative_groups.h>

#include "platform/cuda/emulation/selftest_kernels.h"

namespace cg = cooperative_groups;

namespace selftest {

constexpr unsigned all = 0xffffffffu;

__device__ unsigned lane() {
    return threadIdx.x % 32;
}

// --- Memory and barriers of a block ------------------------------------------------------------

// out[i] = in[n - 1 - i] for a block of n threads.
template <Fault fault>
__global__ void reverse(int n, const int* in, int* out) {
    __shared__ int held[256];
    const int i = int(threadIdx.x);
    if (fault != Fault::uninitialised || i > 0) held[i] = in[i];
    if (fault == Fault::divergentBarrier) {
        if (i < n / 2) __syncthreads();
    } else if (fault != Fault::noBarrier) {
        __syncthreads();
    }
    const int beyond = fault == Fault::sharedBounds ? 256 : 0;
    out[i + (fault == Fault::bounds ? 1 : 0)] = held[n - 1 - i + beyond];
}

// Every block adds to one number without an atomic operation.
__global__ void sumWithoutAtomics(int* out) {
    if (threadIdx.x == 0) *out += 1;
}

// Reads a number through an address that is not a multiple of its size.
__global__ void misaligned(const char* in, int* out) {
    *out = *reinterpret_cast<const int*>(in + 2);
}

// --- Warps -------------------------------------------------------------------------------------

// The sum of each warp's numbers by four kinds of exchange; all must agree.
template <Fault fault>
__global__ void warpSums(const int* in, int* out) {
    const int mine = in[threadIdx.x];
    int down = mine, across = mine, up = mine;
    for (int d = 16; d > 0; d /= 2) {
        down += __shfl_down_sync(all, down, d);
        across += __shfl_xor_sync(all, across, d);
    }
    for (int d = 1; d < 32; d *= 2) {
        const int below = __shfl_up_sync(all, up, d);
        if (lane() >= d) up += below;
    }
    if (fault == Fault::absentLane) {
        if (lane() < 16) down += __shfl_sync(all, down, 0);
        return;
    }
    const int first = __shfl_sync(all, down, 0), last = __shfl_sync(all, up, 31);
    const int reduced = __reduce_add_sync(all, mine);
    const bool agreed = first == across && across == last && last == reduced;
    out[threadIdx.x] = agreed ? across : -1;
}

// Votes, matches and halves of a warp.
__global__ void warpVotes(const int* in, unsigned* out) {
    const int mine = in[threadIdx.x];
    const unsigned odd = __ballot_sync(all, mine % 2);
    const unsigned equal = __match_any_sync(all, mine / 4);
    int same = 0;
    __match_all_sync(all, mine / 64, &same);
    const bool half = lane() < 16;
    int sum = mine;
    for (int d = 8; d > 0; d /= 2)  // two groups of 16, in branches of their own
        sum += half ? __shfl_xor_sync(0x0000ffffu, sum, d, 16)
                    : __shfl_xor_sync(0xffff0000u, sum, d, 16);
    unsigned* const row = out + 6 * threadIdx.x;
    row[0] = odd;
    row[1] = equal;
    row[2] = unsigned(same) + 2 * __any_sync(all, mine == 3) + 4 * __all_sync(all, mine >= 0);
    row[3] = unsigned(sum);
    row[4] = __reduce_max_sync(all, unsigned(mine)) - __reduce_min_sync(all, unsigned(mine));
    row[5] = unsigned(__ffs(int(odd)));
}

// Neighbours of a warp exchange numbers through shared memory.
template <Fault fault>
__global__ void warpNeighbours(const int* in, int* out) {
    __shared__ int held[64];
    held[threadIdx.x] = in[threadIdx.x];
    if (fault != Fault::noWarpBarrier) __syncwarp();
    out[threadIdx.x] = held[threadIdx.x ^ 1];
}

// --- Atomic operations -------------------------------------------------------------------------

// A histogram by shared counters, then extremes and sums of all blocks by global ones.
template <Fault fault>
__global__ void histogram(int n, const int* in, unsigned* bins, Extremes* extremes) {
    __shared__ unsigned mine[8];
    if (threadIdx.x < 8) mine[threadIdx.x] = 0;
    __syncthreads();
    for (int i = int(blockIdx.x * blockDim.x + threadIdx.x); i < n;
         i += int(gridDim.x * blockDim.x)) {
        if (fault == Fault::noAtomic)
            mine[in[i] % 8] += 1;
        else
            atomicAdd(&mine[in[i] % 8], 1u);
        atomicMax(&extremes->largest, in[i]);
        atomicMin(&extremes->least, in[i]);
        atomicAdd(&extremes->sum, static_cast<unsigned long long>(in[i]));
        atomicAdd(&extremes->real, double(in[i]));
        atomicAdd(&extremes->single, float(in[i]));
        atomicMax(&extremes->wide, static_cast<long long>(in[i]) << 33);
        atomicOr(&extremes->bits, 1u << in[i] % 32);
    }
    __syncthreads();
    if (threadIdx.x < 8) atomicAdd(&bins[threadIdx.x], mine[threadIdx.x]);
    if (threadIdx.x == 0) atomicExch(&extremes->seen, 1);
}

// A lock of compare-and-swap around an ordinary sum.
template <Fault fault>
__global__ void locked(int* lock, int* sum) {
    if (threadIdx.x != 0) return;
    while (atomicCAS(lock, 0, 1) != 0) {
    }
    if (fault != Fault::noFence) __threadfence();
    *sum += 1;
    if (fault != Fault::noFence) __threadfence();
    atomicExch(lock, 0);
}

// Each block writes its part; the last to come adds them up.
template <Fault fault>
__global__ void lastBlockSums(const int* in, int* parts, unsigned* ticket, int* out) {
    __shared__ bool last;
    if (threadIdx.x == 0) {
        parts[blockIdx.x] = in[blockIdx.x];
        if (fault != Fault::noFence) __threadfence();
        last = atomicAdd(ticket, 1u) == gridDim.x - 1;
        __threadfence();
    }
    __syncthreads();
    if (!last || threadIdx.x != 0) return;
    int sum = 0;
    for (unsigned i = 0; i < gridDim.x; ++i) sum += parts[i];
    *out = sum;
}

// --- Grids and clusters ------------------------------------------------------------------------

// Each block reads what its right neighbour wrote.
template <Fault fault>
__global__ void gridNeighbours(int* parts, int* out) {
    cg::grid_group grid = cg::this_grid();
    for (int round = 1; round <= 3; ++round) {
        if (threadIdx.x == 0) parts[blockIdx.x] = round * int(blockIdx.x + 1);
        if (fault != Fault::noGridBarrier) grid.sync();
        if (threadIdx.x == 1) out[blockIdx.x] = parts[(blockIdx.x + 1) % gridDim.x];
        if (fault != Fault::noGridBarrier) grid.sync();
    }
}

// Each block adds up the shared memory of all blocks of its cluster.
template <Fault fault>
__global__ void clusterSums(const int* in, int* out) {
    __shared__ int held[32];
    cg::cluster_group cluster = cg::this_cluster();
    held[threadIdx.x] = in[blockIdx.x * 32 + threadIdx.x];
    if (fault != Fault::noClusterBarrier) cluster.sync();
    int sum = 0;
    for (unsigned rank = 0; rank < cluster.num_blocks(); ++rank)
        sum += cluster.map_shared_rank(held, rank)[threadIdx.x];
    if (fault != Fault::leavesCluster) cluster.sync();
    out[blockIdx.x * 32 + threadIdx.x] = sum + 1000 * int(cluster.block_rank());
}

// Dynamic shared memory: the block's numbers, reversed.
__global__ void dynamicReverse(const double* in, double* out) {
    extern __shared__ double numbers[];
    numbers[threadIdx.x] = in[threadIdx.x];
    __syncthreads();
    out[threadIdx.x] = numbers[blockDim.x - 1 - threadIdx.x];
}

// As long as nobody writes to where it looks, for ever.
__global__ void spin(int* flag) {
    while (*static_cast<volatile int*>(flag) == 0) {
    }
}

// y := a x + y.
__global__ void axpy(int n, float a, const float* x, float* y) {
    const int i = int(blockIdx.x * blockDim.x + threadIdx.x);
    if (i < n) y[i] += a * x[i];
}

template <class Kernel>
const void* address(Kernel* kernel) {
    return reinterpret_cast<const void*>(kernel);
}

const void* kernel(Name name, Fault fault) {
#define CASE(which, fault_) \
    if (name == Name::which && fault == Fault::fault_) return address(&which<Fault::fault_>);
#define PLAIN(which) \
    if (name == Name::which) return address(&which);
    CASE(reverse, none)
    CASE(reverse, noBarrier)
    CASE(reverse, divergentBarrier)
    CASE(reverse, uninitialised)
    CASE(reverse, bounds)
    CASE(reverse, sharedBounds)
    CASE(warpSums, none)
    CASE(warpSums, absentLane)
    CASE(warpNeighbours, none)
    CASE(warpNeighbours, noWarpBarrier)
    CASE(histogram, none)
    CASE(histogram, noAtomic)
    CASE(locked, none)
    CASE(locked, noFence)
    CASE(lastBlockSums, none)
    CASE(lastBlockSums, noFence)
    CASE(gridNeighbours, none)
    CASE(gridNeighbours, noGridBarrier)
    CASE(clusterSums, none)
    CASE(clusterSums, noClusterBarrier)
    CASE(clusterSums, leavesCluster)
    PLAIN(sumWithoutAtomics)
    PLAIN(misaligned)
    PLAIN(warpVotes)
    PLAIN(dynamicReverse)
    PLAIN(spin)
    PLAIN(axpy)
    return nullptr;
}

}  // namespace selftest
