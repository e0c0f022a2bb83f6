// The language that kernels are written in: one text for the GPU and for the CPU.
//
// A kernel's body is written for one block. Code outside a region is uniform for the block; a
// region (`each`, `rows`, `lanes`) runs all lanes of the block; `barrier` stands between regions
// where one reads what another wrote. On the GPU a lane is a thread. On the CPU a region is a
// loop that the compiler vectorises, and neighbouring blocks are merged into one.
//
// Rules: no dependence between the lanes of one region (the vectoriser is told so, and will
// believe it); uniform code reads no memory that a region of the same kernel writes, unless a
// barrier stands between: the CPU never shows this fault, a GPU does.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/complex.h"

#ifdef __CUDACC__
namespace cudalib {  // to a device, a map is a name
class Map1D;
class Map2D;
class TriangularMap2D;
template <unsigned N>
class StaticMap1D;
template <unsigned N>
struct StaticOneBlockMap1D;
}  // namespace cudalib
#define LUMO_DEVICE __device__ __forceinline__
#define LUMO_SHARED __shared__
#define LUMO_SIMD
#else
#include <algorithm>

#include "cudalib/maps.h"
#include "platform/table.h"
#define LUMO_DEVICE inline __attribute__((always_inline))
#define LUMO_SHARED alignas(64)
#ifdef __clang__
#define LUMO_SIMD _Pragma("clang loop vectorize(assume_safety)")
#else
#define LUMO_SIMD _Pragma("GCC ivdep")
#endif
#endif

namespace cudalib {

// A block of a 1-D map, for kernels whose elements are independent of each other.
class Elements {
  public:
    // f(i) for this block's i below n.
    template <class F>
    LUMO_DEVICE void each(std::size_t n, F f) const;

#ifdef __CUDACC__
    LUMO_DEVICE static Elements current() {
        return {};
    }
#else
    static constexpr std::size_t merged = 1024;
    static std::size_t threads(const platform::Launch& l) {
        return std::size_t(l.grid.x) * l.grid.y * l.grid.z * l.block.x;
    }
    static std::size_t count(const platform::Launch& l) {
        return (threads(l) - 1) / merged + 1;
    }
    static Elements item(const platform::Launch& l, std::size_t k) {
        Elements e;
        e.begin_ = k * merged;
        e.end_ = std::min(threads(l), e.begin_ + merged);
        return e;
    }

  private:
    std::size_t begin_, end_;
#endif
};

// A block of a 1-D map, for kernels that pass through much memory: for each element they run along
// a line of the matrix. A CPU takes long strips, one for each of its threads, since short ones
// are hard on its prefetchers and page tables.
class Strip {
  public:
    // f(i) for this block's i below n.
    template <class F>
    LUMO_DEVICE void each(std::size_t n, F f) const;

    // What each element keeps from region to region: a register on a GPU, an array on a CPU.
    template <class T>
    class Kept;

#ifdef __CUDACC__
    LUMO_DEVICE static Strip current() {
        return {};
    }
#else
    static constexpr std::size_t longest = 4096, granule = 128;
    static std::size_t length(const platform::Launch& l) {
        const std::size_t share = (Elements::threads(l) - 1) / std::size_t(l.threads) + 1;
        return std::min(longest, (share + granule - 1) / granule * granule);
    }
    static std::size_t count(const platform::Launch& l) {
        return (Elements::threads(l) - 1) / length(l) + 1;
    }
    static Strip item(const platform::Launch& l, std::size_t k) {
        Strip s;
        s.begin_ = k * length(l);
        s.end_ = std::min(Elements::threads(l), s.begin_ + length(l));
        return s;
    }

  private:
    std::size_t begin_, end_;
#endif
};

// A block of a 2-D map, for kernels whose elements are independent of each other.
class Tile {
  public:
    // The rows of one of the block's columns.
    class Column {
      public:
        // f(i) for this block's rows with from <= i < to.
        template <class F>
        LUMO_DEVICE void rows(int from, int to, F f) const;

      private:
        friend class Tile;
#ifdef __CUDACC__
        int i_;
#else
        int begin_, end_;
#endif
    };

    // f(column, j) for this block's columns j below n.
    template <class F>
    LUMO_DEVICE void columns(int n, F f) const;

#ifdef __CUDACC__
    LUMO_DEVICE static Tile current() {
        return {};
    }
#else
    static constexpr int mergedRows = 1024, mergedColumns = 16;
    static long rowsCovered(const platform::Launch& l) {
        return long(l.grid.x) * l.block.x;
    }
    static long columnsCovered(const platform::Launch& l) {
        return long(l.grid.y) * l.block.y;
    }
    static std::size_t across(const platform::Launch& l) {
        return std::size_t(rowsCovered(l) - 1) / mergedRows + 1;
    }
    static std::size_t count(const platform::Launch& l) {
        return across(l) * (std::size_t(columnsCovered(l) - 1) / mergedColumns + 1);
    }
    static Tile item(const platform::Launch& l, std::size_t k) {
        Tile t;
        const long i = long(k % across(l)) * mergedRows, j = long(k / across(l)) * mergedColumns;
        t.rowBegin_ = int(i);
        t.rowEnd_ = int(std::min({rowsCovered(l), i + mergedRows, long(limit)}));
        t.columnBegin_ = int(j);
        t.columnEnd_ = int(std::min({columnsCovered(l), j + mergedColumns, long(limit)}));
        return t;
    }

  private:
    static constexpr int limit = 2147483647;
    int rowBegin_, rowEnd_, columnBegin_, columnEnd_;
#endif
};

// A single thread, for kernels on one element.
class Single {
  public:
#ifdef __CUDACC__
    LUMO_DEVICE static Single current() {
        return {};
    }
    template <class F>
    LUMO_DEVICE void once(F f) const {
        if (threadIdx.x == 0) f();
    }
#else
    static std::size_t count(const platform::Launch&) {
        return 1;
    }
    static Single item(const platform::Launch&, std::size_t) {
        return {};
    }
    template <class F>
    LUMO_DEVICE void once(F f) const {
        f();
    }
#endif
};

// A block of X by Y lanes that work together through shared memory. A CPU may be given a
// larger team than the GPU, in which whole blocks of the launch merge.
template <int X_, int Y_>
class Team {
  public:
    static constexpr int X = X_, Y = Y_;

    // f(y) for this block's rows of lanes with y < n, f(x) for the lanes of one row with x < n.
    template <class F>
    LUMO_DEVICE static void rows(long n, F f);
    template <class F>
    LUMO_DEVICE static void lanes(long n, F f);
    LUMO_DEVICE static void barrier() {
#ifdef __CUDACC__
        __syncthreads();
#endif
    }

#ifdef __CUDACC__
    LUMO_DEVICE long x() const {
        return blockIdx.x;
    }
    LUMO_DEVICE long y() const {
        return blockIdx.y;
    }
    LUMO_DEVICE static Team current() {
        return {};
    }
#else
    long x() const {
        return x_;
    }
    long y() const {
        return y_;
    }
    static std::size_t across(const platform::Launch& l) {
        return (std::size_t(l.grid.x) * l.block.x - 1) / X + 1;
    }
    static std::size_t down(const platform::Launch& l) {
        return (std::size_t(l.grid.y) * l.block.y - 1) / Y + 1;
    }
    static std::size_t count(const platform::Launch& l) {
        return across(l) * down(l);
    }
    static Team item(const platform::Launch& l, std::size_t k) {
        Team t;
        t.x_ = long(k % across(l));
        t.y_ = long(k / across(l));
        return t;
    }

  private:
    long x_, y_;
#endif
};

#ifdef __CUDACC__

template <class F>
LUMO_DEVICE void Elements::each(std::size_t n, F f) const {
    const std::size_t block =
        (std::size_t(blockIdx.z) * gridDim.y + blockIdx.y) * gridDim.x + blockIdx.x;
    const std::size_t i = block * blockDim.x + threadIdx.x;
    if (i < n) f(i);
}

template <class F>
LUMO_DEVICE void Strip::each(std::size_t n, F f) const {
    Elements::current().each(n, f);
}

template <class T>
class Strip::Kept {
  public:
    LUMO_DEVICE explicit Kept(Strip) {}
    LUMO_DEVICE T& operator[](std::size_t) { return value_; }

  private:
    T value_;
};

template <class F>
LUMO_DEVICE void Tile::Column::rows(int from, int to, F f) const {
    if (i_ >= from && i_ < to) f(i_);
}

template <class F>
LUMO_DEVICE void Tile::columns(int n, F f) const {
    Column column;
    column.i_ = int(blockIdx.x * blockDim.x + threadIdx.x);
    const int j = int(blockIdx.y * blockDim.y + threadIdx.y);
    if (j < n) f(column, j);
}

template <int X_, int Y_>
template <class F>
LUMO_DEVICE void Team<X_, Y_>::rows(long n, F f) {
    if (threadIdx.y < n) f(int(threadIdx.y));
}

template <int X_, int Y_>
template <class F>
LUMO_DEVICE void Team<X_, Y_>::lanes(long n, F f) {
    if (threadIdx.x < n) f(int(threadIdx.x));
}

#else

// A full block's loop has a trip count that the compiler knows.
template <class F>
LUMO_DEVICE void Elements::each(std::size_t n, F f) const {
    const std::size_t end = std::min(end_, n);
    if (end == begin_ + merged) {
        LUMO_SIMD for (std::size_t i = begin_; i < begin_ + merged; ++i) f(i);
    } else {
        LUMO_SIMD for (std::size_t i = begin_; i < end; ++i) f(i);
    }
}

template <class F>
LUMO_DEVICE void Strip::each(std::size_t n, F f) const {
    const std::size_t end = std::min(end_, n);
    LUMO_SIMD for (std::size_t i = begin_; i < end; ++i) f(i);
}

template <class T>
class Strip::Kept {
  public:
    explicit Kept(Strip strip) : begin_(strip.begin_) {}
    T& operator[](std::size_t i) { return values_[i - begin_]; }

  private:
    std::size_t begin_;
    alignas(64) T values_[longest];
};

template <class F>
LUMO_DEVICE void Tile::Column::rows(int from, int to, F f) const {
    const int begin = std::max(from, begin_), end = std::min(to, end_);
    LUMO_SIMD for (int i = begin; i < end; ++i) f(i);
}

template <class F>
LUMO_DEVICE void Tile::columns(int n, F f) const {
    Column column;
    column.begin_ = rowBegin_;
    column.end_ = rowEnd_;
    const int end = std::min(columnEnd_, n);
    for (int j = columnBegin_; j < end; ++j) f(column, j);
}

template <int X_, int Y_>
template <class F>
LUMO_DEVICE void Team<X_, Y_>::rows(long n, F f) {
    const int end = int(std::min<long>(n, Y));
    for (int y = 0; y < end; ++y) f(y);
}

template <int X_, int Y_>
template <class F>
LUMO_DEVICE void Team<X_, Y_>::lanes(long n, F f) {
    if (n >= X) {
        LUMO_SIMD for (int x = 0; x < X; ++x) f(x);
    } else {
        LUMO_SIMD for (int x = 0; x < int(n); ++x) f(x);
    }
}

#endif

// Asks for the memory `ahead` elements behind p, which a CPU's caches do not foresee and a GPU does
// not need to; to be written there, or read alone. The address may lie outside of the matrix.
template <bool written, class T>
LUMO_DEVICE void prefetch([[maybe_unused]] const T* p, [[maybe_unused]] std::size_t ahead) {
#ifndef __CUDACC__
    const auto address = reinterpret_cast<std::uintptr_t>(p) + ahead * sizeof(T);
    __builtin_prefetch(reinterpret_cast<const void*>(address), written);
#endif
}

// Addresses element (i, j) of a column-major matrix; an offset has 64 bits.
template <class T>
LUMO_DEVICE T& at(T* a, int lda, int i, int j) {
    return a[std::size_t(j) * std::size_t(lda) + std::size_t(i)];
}

}  // namespace cudalib
