// Streams: work that is done when it must be, when it is given, or in between, always in an order
// that the documentation allows.
#pragma once

#include <cuda_runtime_api.h>

#include <cstdint>
#include <deque>
#include <functional>

namespace emulated {

struct Stream;

struct Operation {
    uint64_t number;  // of all operations, in the order in which they were given
    std::function<void()> work;
    Stream* after = nullptr;  // with all that this stream was given until `afterNumber`
    uint64_t afterNumber = 0;
};

struct Stream {
    int device;
    bool legacyDefault;  // waits for blocking streams, and they for it
    bool blocking;
    int priority;
    std::deque<Operation> queue;
};

// The stream of a handle; null with a finding if there is none.
Stream* streamOf(cudaStream_t stream);
Stream& defaultStream(int device);

// Gives work to a stream of the current device. The work begins once `after` has come so far.
uint64_t submit(Stream& stream, std::function<void()> work, Stream* after = nullptr,
                uint64_t afterNumber = 0);

// Does what a stream was given until an operation, and what that waits for.
void completeUntil(Stream& stream, uint64_t number);
void complete(Stream& stream);
void completeDevice(int device);
// Whether a stream lives: one that was destroyed has done its work.
bool lives(const Stream* stream);

}  // namespace emulated
