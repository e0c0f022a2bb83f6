// The blocks of a cooperative launch, which run at the same time and wait for each other.
#pragma once

#include "cudalib/block.h"

#ifdef __CUDACC__
#define LUMO_UNROLLED _Pragma("unroll")
#else
#include <memory>
#define LUMO_UNROLLED
#endif

namespace cudalib {

// A block of X lanes of such a launch. A lane has one element i of its own, a row of a matrix as a
// rule. On a CPU all blocks are one.
template <int X_>
class Grid {
  public:
    static constexpr int X = X_;

    // f(i) for this block's i below n.
    template <class F>
    LUMO_DEVICE static void each(int n, F f);
    // f(x) for all x below n, in every block.
    template <class F>
    LUMO_DEVICE static void lanes(int n, F f);
    // For all lanes of the block, the best of f(i) for this block's i below n, or of f(x) for all x
    // below n, and of `none`: better(v, w) is v or w, in either order.
    template <class V, class F, class Better>
    LUMO_DEVICE static V bestOfEach(int n, V none, F f, Better better);
    template <class V, class F, class Better>
    LUMO_DEVICE static V bestOfAll(int n, V none, F f, Better better);

    // For each k below N, the sum of f(i, k) over this block's i below n, in the block's shared
    // memory and for all of its lanes.
    template <int N, class T, class F>
    LUMO_DEVICE static void sumsOfEach(int n, F f, T (&sums)[N]);

    // For the lanes of a block, as a team's, and for those of all blocks, which meet at a number in
    // device memory. It is zero before the first launch, and as good as zero after every other.
    LUMO_DEVICE static void barrier();
    LUMO_DEVICE static void barrierOfGrid(unsigned* meeting);

    // What each element keeps from region to region, N values each, by kept(i, k). On a GPU they
    // are registers if every k is known to the compiler: LUMO_UNROLLED loops are for that.
    template <class T, int N>
    class Kept;

#ifdef __CUDACC__
    LUMO_DEVICE static int block() {
        return int(blockIdx.x);
    }
    LUMO_DEVICE static int blocks() {
        return int(gridDim.x);
    }
    LUMO_DEVICE static Grid current() {
        return {};
    }

#else
    static int block() {
        return 0;
    }
    static int blocks() {
        return 1;
    }
    static std::size_t count(const platform::Launch&) {
        return 1;
    }
    static Grid item(const platform::Launch&, std::size_t) {
        return {};
    }
#endif
};

#ifdef __CUDACC__

// The value that the lane of the warp has whose number differs in this bit.
template <class V>
LUMO_DEVICE V ofPartner(V value, int bit) {
    static_assert(sizeof(V) % sizeof(unsigned) == 0);
    unsigned words[sizeof(V) / sizeof(unsigned)];
    memcpy(words, &value, sizeof value);
    LUMO_UNROLLED for (unsigned& word : words) word = __shfl_xor_sync(0xffffffffu, word, bit);
    memcpy(&value, words, sizeof value);
    return value;
}

constexpr int warpLanes = 32;

// For all lanes of a warp, the best of theirs.
template <class V, class Better>
LUMO_DEVICE V bestOfWarp(V mine, Better better) {
    for (int bit = warpLanes / 2; bit > 0; bit /= 2) mine = better(mine, ofPartner(mine, bit));
    return mine;
}

template <int X_>
template <class F>
LUMO_DEVICE void Grid<X_>::each(int n, F f) {
    const int i = block() * X + int(threadIdx.x);
    if (i < n) f(i);
}

template <int X_>
template <class F>
LUMO_DEVICE void Grid<X_>::lanes(int n, F f) {
    for (int x = int(threadIdx.x); x < n; x += X) f(x);
}

template <int X_>
template <class V, class F, class Better>
LUMO_DEVICE V Grid<X_>::bestOfEach(int n, V none, F f, Better better) {
    static_assert(X % warpLanes == 0);
    LUMO_SHARED V ofWarps[X / warpLanes];
    V best = none;
    each(n, [&](int i) { best = f(i); });
    best = bestOfWarp(best, better);
    if (threadIdx.x % warpLanes == 0) ofWarps[threadIdx.x / warpLanes] = best;
    barrier();
    for (int w = 0; w < X / warpLanes; ++w) best = better(best, ofWarps[w]);
    barrier();  // the next one's warps write there again
    return best;
}

// Every warp looks for itself, and waits for no other.
template <int X_>
template <class V, class F, class Better>
LUMO_DEVICE V Grid<X_>::bestOfAll(int n, V none, F f, Better better) {
    for (int x = int(threadIdx.x) % warpLanes; x < n; x += warpLanes) none = better(none, f(x));
    return bestOfWarp(none, better);
}

// Of two partners, one has the sum of both's `low` and the other one that of both's `high`.
template <class T>
LUMO_DEVICE T sumWithPartner(T low, T high, int bit) {
    const bool upper = (threadIdx.x & unsigned(bit)) != 0;
    return (upper ? high : low) + ofPartner(upper ? low : high, bit);
}

// Of so many neighbouring lanes as each has values, 2 bits: a lane gets the sum of all lanes' value
// that has its number among them. Half of the values go to the partner, then half of what is left.
template <int bits, class T>
LUMO_DEVICE T foldedSum(T* values) {
    if constexpr (bits == 0) {
        return values[0];
    } else {
        LUMO_UNROLLED for (int k = 0; k < bits; ++k) {
            values[k] = sumWithPartner(values[k], values[k + bits], bits);
        }
        return foldedSum<bits / 2>(values);
    }
}

// By groups of half as many values as a warp has lanes, of whose sums each half of the warp makes
// its own: few are under way at a time.
template <int X_>
template <int N, class T, class F>
LUMO_DEVICE void Grid<X_>::sumsOfEach(int n, F f, T (&sums)[N]) {
    constexpr int warps = X / warpLanes, group = warpLanes / 2, half = group / 2;
    static_assert(N % group == 0 && X % warpLanes == 0);
    LUMO_SHARED T ofWarps[warps][N];
    const int i = block() * X + int(threadIdx.x), lane = int(threadIdx.x) % warpLanes;
    LUMO_UNROLLED for (int first = 0; first < N; first += group) {
        T values[half];
        LUMO_UNROLLED for (int k = first; k < first + half; ++k) {
            const T low = i < n ? f(i, k) : T(0), high = i < n ? f(i, k + half) : T(0);
            values[k - first] = sumWithPartner(low, high, half);
        }
        const T sum = foldedSum<half / 2>(values), all = sum + ofPartner(sum, group);
        if (lane < group) ofWarps[int(threadIdx.x) / warpLanes][first + lane] = all;
    }
    barrier();
    lanes(N, [&](int k) {
        T sum = ofWarps[0][k];
        for (int w = 1; w < warps; ++w) sum = sum + ofWarps[w][k];
        sums[k] = sum;
    });
    barrier();
}

template <int X_>
LUMO_DEVICE void Grid<X_>::barrier() {
    __syncthreads();
}

// All that is added at one meeting is `turn`, and that bit changes when the last block has come,
// not earlier: the first block adds what the others' ones leave of it.
template <int X_>
LUMO_DEVICE void Grid<X_>::barrierOfGrid(unsigned* meeting) {
    constexpr unsigned turn = 1u << 30;
    barrier();
    if (blocks() > 1 && threadIdx.x == 0) {
        const unsigned mine = block() == 0 ? turn - unsigned(blocks() - 1) : 1u;
        __threadfence();
        const unsigned before = atomicAdd(meeting, mine);
        while (((*static_cast<volatile unsigned*>(meeting) ^ before) & turn) == 0) {
        }
        __threadfence();
    }
    barrier();
}

template <int X_>
template <class T, int N>
class Grid<X_>::Kept {
  public:
    LUMO_DEVICE explicit Kept(int /*n*/) {}
    LUMO_DEVICE T& operator()(int /*i*/, int k) { return values_[k]; }

  private:
    T values_[N];
};

#else

template <int X_>
template <class F>
LUMO_DEVICE void Grid<X_>::each(int n, F f) {
    LUMO_SIMD for (int i = 0; i < n; ++i) f(i);
}

template <int X_>
template <class F>
LUMO_DEVICE void Grid<X_>::lanes(int n, F f) {
    each(n, f);
}

template <int X_>
template <class V, class F, class Better>
LUMO_DEVICE V Grid<X_>::bestOfEach(int n, V none, F f, Better better) {
    for (int i = 0; i < n; ++i) none = better(none, f(i));
    return none;
}

template <int X_>
template <class V, class F, class Better>
LUMO_DEVICE V Grid<X_>::bestOfAll(int n, V none, F f, Better better) {
    return bestOfEach(n, none, f, better);
}

template <int X_>
template <int N, class T, class F>
LUMO_DEVICE void Grid<X_>::sumsOfEach(int n, F f, T (&sums)[N]) {
    for (int k = 0; k < N; ++k) sums[k] = T(0);
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < N; ++k) sums[k] = sums[k] + f(i, k);
}

template <int X_>
LUMO_DEVICE void Grid<X_>::barrier() {}
template <int X_>
LUMO_DEVICE void Grid<X_>::barrierOfGrid(unsigned*) {}

template <int X_>
template <class T, int N>
class Grid<X_>::Kept {
  public:
    explicit Kept(int n) : values_(new T[std::size_t(n) * N]) {}
    T& operator()(int i, int k) { return values_[std::size_t(i) * N + std::size_t(k)]; }

  private:
    std::unique_ptr<T[]> values_;
};

#endif

}  // namespace cudalib
