// What a translated kernel sees: one lane of a block, with every access to memory checked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "platform/cuda/emulation/lane_arithmetic.h"
#include "platform/cuda/emulation/shape.h"

namespace emulated {

class Team;
struct Block;
struct Knowledge;
struct LaneKnowledge;

// Why a lane's function returned: the lane has ended, or is to be run again when others are as far.
// `spin` comes before an access by which a lane may be waiting for another one's.
enum class Stop { exited, barrier, warp, cluster, spin };

enum class Order { relaxed, acquire, release, acq_rel };

// What the lanes of a warp do together.
enum class Exchange {
    sync,
    up,
    down,
    bfly,
    idx,
    any,
    all,
    uni,
    ballot,
    matchAny,
    matchAll,
    sum,
    least,
    leastSigned,
    largest,
    largestSigned,
    bitAnd,
    bitOr,
    bitXor
};

// Where parameters, a lane's local memory and the shared memory of a cluster's blocks begin in the
// one space of addresses. Device memory lies far above.
constexpr uint64_t parameterWindow = 0x10000, localWindow = 0x100000, sharedWindow = 0x1000000;
constexpr uint64_t sharedStride = sharedWindow;
constexpr unsigned largestCluster = 16;

// A word's accesses, for the search for races: the last writer, the last two readers, and who reads
// at all (races.h).
struct Shadow {
    uint64_t writer, reader, before, blocks;
};

struct Lane {
    uint32_t tid[3], ctaid[3];
    uint32_t linear;  // among the lanes of its block
    int state;        // where its function goes on
    const Shape* shape;
    void* registers;

    uint64_t low, high;  // the allocation that was met last
    std::ptrdiff_t toAlias;
    uint64_t arena;
    Shadow* globalShadow;  // by (address - arena) / 4; null where races are not looked for
    const unsigned char* parameters;
    uint32_t parameterBytes, sharedBytes, localBytes;
    unsigned char* localMemory;
    uint64_t sharedBase;
    unsigned char* sharedMemory;
    unsigned char* sharedWritten;  // for each byte
    Shadow* sharedShadow;

    uint64_t stamp;  // of its accesses until it stops: races.h
    Team* team;
    Block* block;
    LaneKnowledge* knowledge;  // null until it has any

    struct {
        Exchange kind;
        uint32_t mask;
        uint64_t value;
        uint32_t where, clamp;
    } offered;
    uint32_t taken;
    bool takenFlag;
    bool arrivedInCluster;
    Stop stop;

    uint32_t laneId() const { return linear % 32; }
    uint32_t warpId() const { return linear / 32; }
    uint32_t warps() const { return (shape->lanes() + 31) / 32; }

    template <int bytes>
    void* global(uint64_t a, bool write, bool strong = false) {
        if (__builtin_expect(a % bytes != 0, 0)) fault("misaligned access", a, bytes, write, 716);
        if (__builtin_expect(a < low || a + bytes > high, 0)) findAllocation(a, bytes, write);
        if (globalShadow) raceGlobal(a, bytes, write, strong);
        return reinterpret_cast<void*>(a + uint64_t(toAlias));
    }
    template <int bytes>
    void* shared(uint64_t a, bool write, bool strong = false) {
        if (__builtin_expect(a % bytes != 0, 0)) fault("misaligned access", a, bytes, write, 716);
        const uint64_t offset = a - sharedBase;
        if (__builtin_expect(offset + bytes > sharedBytes || offset > sharedBytes, 0))
            fault("shared memory out of bounds", a, bytes, write, 700);
        if (sharedShadow) raceShared(*this, sharedShadow, offset, bytes, write, strong);
        markShared(sharedWritten + offset, bytes, write, offset);
        return sharedMemory + offset;
    }
    template <int bytes>
    void* local(uint64_t a, bool write, bool = false) {
        const uint64_t offset = a - localWindow;
        if (offset + bytes > localBytes || offset > localBytes || a % bytes)
            fault("local memory out of bounds", a, bytes, write, 700);
        return localMemory + offset;
    }
    template <int bytes>
    const void* param(uint64_t a, bool, bool = false) {
        const uint64_t offset = a - parameterWindow;
        if (__builtin_expect(offset + bytes > parameterBytes || offset % bytes, 0))
            fault("parameter out of bounds", a, bytes, false, 700);
        return parameters + offset;
    }
    // By the address: any space but that of the parameters.
    template <int bytes>
    void* generic(uint64_t a, bool write, bool strong = false) {
        if (a >= sharedWindow && a < sharedWindow + largestCluster * sharedStride) {
            if (a / sharedStride == sharedBase / sharedStride)
                return shared<bytes>(a, write, strong);
            if (a % bytes != 0) fault("misaligned access", a, bytes, write, 716);
            return sharedOfOther(a, bytes, write, strong);
        }
        return a >= localWindow && a < sharedWindow ? local<bytes>(a, write)
                                                    : global<bytes>(a, write, strong);
    }

    // An atomic operation on what was found at *q.
    template <class T, class F>
    T change(T* q, F f, Order order) {
        const T old = *q, now = T(f(old));
        *q = now;
        changed(q, order, std::memcmp(&old, &now, sizeof now) != 0);
        return old;
    }
    void readStrongly(const void* q, Order order);
    void writeStrongly(const void* q, Order order);
    void changed(const void* q, Order order, bool different);
    void fence();

    void offer(Exchange kind, uint32_t mask, uint64_t value = 0, uint32_t where = 0,
               uint32_t clamp = 0) {
        offered = {kind, mask, value, where, clamp};
    }
    // An address in the shared memory of the block of this rank in the cluster.
    uint64_t ofRank(uint64_t a, uint32_t rank);
    void useLocal(unsigned char* memory, uint32_t bytes) {
        localMemory = memory;
        localBytes = bytes;
    }

    void fits32(int64_t v) {
        if (__builtin_expect(v != int64_t(int32_t(v)), 0)) overflowed();
    }
    [[noreturn]] void fault(const char* what, uint64_t a, int bytes, bool write, int error);

    void markShared(unsigned char* written, int bytes, bool write, uint64_t offset) {
        if (write)
            std::memset(written, 1, std::size_t(bytes));
        else
            for (int i = 0; i < bytes; ++i)
                if (!written[i]) uninitialised(offset + uint64_t(i));
    }

  private:
    static void raceShared(Lane& lane, Shadow* shadow, uint64_t offset, int bytes, bool write,
                           bool strong);
    void raceGlobal(uint64_t a, int bytes, bool write, bool strong);
    void findAllocation(uint64_t a, int bytes, bool write);
    void* sharedOfOther(uint64_t a, int bytes, bool write, bool strong);
    void overflowed();
    void uninitialised(uint64_t offset);
};

}  // namespace emulated
