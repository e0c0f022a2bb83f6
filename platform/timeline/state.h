// What the parts of the timeline platform share. One thread at a time calls the library here.
#pragma once

#include <time.h>

#include <map>
#include <random>

#include "platform/cuda3_errors.h"
#include "platform/timeline/control.h"

namespace timeline {

using namespace cuda3;

// --- Memory ----------------------------------------------------------------------------------

enum class Place { device, pageLocked, operand, elsewhere };

struct Block {
    std::size_t bytes;
    Place place;
    bool kept;  // given back, and waiting for another request
};

class Memory {
  public:
    ~Memory() { clear(); }
    void clear();
    // A reservation of the address space; null if there is no room.
    void* reserve(std::size_t bytes, Place place, bool touchable);
    void release(void* pointer);
    // The block that a pointer leads into, or null.
    const Block* find(const void* pointer) const;
    Place placeOf(const void* pointer) const;

    std::map<char*, Block> blocks;
    std::size_t used = 0, kept = 0, peak = 0;  // bytes of the device
    bool outOfAddresses = false;
};

// --- The machine at work ---------------------------------------------------------------------

struct Stream {
    Reached reached;
};

struct State {
    Machine machine;
    Clock clock;
    Counts counts;
    Memory memory;
    std::map<platform::Stream, Reached> streams;  // null: the default stream
    std::map<platform::Event, Reached> events;
    std::uintptr_t handles = 0;
    platform::Stream blasStream = nullptr;
    int cudaError = 0, cublasError = 0;
    bool cublasReady = false;
    std::mt19937_64 random{1};
    double left = 0;  // this thread's time when it last left the platform

    // Whether the device is the host.
    bool joined() const { return machine.sharesMemory != 0; }
};
State& state();

// Keeps an error for cudaGetLastError.
int reported(int error);

// Seconds that this thread has computed.
inline double threadSeconds() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

// In an entry: what the library did since the last one is the host's time on the machine that is
// described, what the entry itself does is nobody's.
class Entry {
  public:
    Entry();
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
};

// Issues an operation: on the stream, in its order and that of the default stream, which waits for
// all others, and they for it.
Reached submit(platform::Stream stream, Kind kind, Load load);
Reached submitCopy(platform::Stream stream, Clock::Engine engine, Kind kind, double seconds);
// All that a stream, or the device, was given.
Reached reachedBy(platform::Stream stream);

// --- What a host may read --------------------------------------------------------------------

// A copy of device memory to where the host may look: what was written there, and numbers that are
// neither zero nor extreme for all else, whatever their type.
void deliver(void* to, std::size_t toPitch, const void* from, std::size_t fromPitch,
             std::size_t width, std::size_t height);
// The norm of so many normal random numbers.
double randomNorm(double count);
// Interchanges of m rows as partial pivoting finds them, from 1.
void randomPivots(int m, int n, int* ipiv);

// --- The CUDA interface ----------------------------------------------------------------------

#define ENTRY(kind, result, name, parameters) result name parameters;
#include "platform/entries.inc"

}  // namespace timeline
