// Faults of the program under the emulated GPU: told at once on the standard error, and at exit by
// the process's exit status, which no test program overlooks.
#pragma once

namespace emulated {

enum class Kind {
    memory,         // an access out of bounds, misaligned, to memory that was freed
    uninitialised,  // shared memory that nobody has written
    race,
    barrier,   // lanes that part ways at one, or wait for ever
    exchange,  // a warp's lanes that do not do the same
    overflow,  // of a signed number of 32 bits
    operand,   // of CUBLAS: arguments, and what they lead to
    copy,
    stream,
    launch,
    device  // something of another device
};

__attribute__((format(printf, 2, 3))) void found(Kind kind, const char* format, ...);

// The same, but only the first time for a key: a fault in a kernel is met by each lane.
bool firstTime(Kind kind, const char* where, const char* what);

}  // namespace emulated
