// What `lumo predict`, and tests, ask of the timeline platform beyond the CUDA interface. It is no
// part of the library: a program that has it hands its table to lumo_private_platform().
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/table.h"
#include "platform/timeline/clock.h"
#include "platform/timeline/machine.h"

namespace timeline {

const platform::Table& table();

// Plays this machine from now on: no memory, no streams, no errors. The library has to be shut
// down.
void start(const Machine& machine);

// How often something was asked of the machine, and how much.
struct Counts {
    long launches = 0, products = 0, copies = 0, allocations = 0, waits = 0, panels = 0;
    double bytesUp = 0, bytesDown = 0;
};

// What happened from begin() to end().
struct Account {
    double seconds = 0;
    // When the device computed, when it did not and what decided that, and what the end waited for.
    ByKind busy{}, idle{}, criticalPath{};
    Counts counts;
    std::size_t deviceBytes = 0;  // at most, of the device's memory
    // An allocation failed for want of addresses here, not of memory there.
    bool outOfAddresses = false;
};
// What is kept for reuse stays.
void begin();
Account end();

// Host memory for an operand, of which nothing is backed. Unless it is `touched`, or the machine's
// device is the host, nobody may read or write it. It lives until the next start().
void* operand(std::size_t bytes, bool touched = false);

}  // namespace timeline
