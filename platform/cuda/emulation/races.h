// When and by whom a word of memory was accessed, in 64 bits, and whether two accesses of a launch
// have an order. Numbers that do not fit wrap around, at worst hiding a race between far accesses.
#pragma once

#include <cstdint>

namespace emulated::stamp {

// launch 12 | block 18 | lane 10 | epoch 12 | epoch of the warp 11 | strong 1. An epoch ends at
// a barrier, a warp's at a barrier of the warp. Strong accesses, such as atomic ones, do not race
// with each other.
constexpr int warpShift = 1, epochShift = 12, laneShift = 24, blockShift = 34, launchShift = 52;
constexpr uint64_t epochMask = 0xfff, warpMask = 0x7ff, laneMask = 0x3ff, blockMask = 0x3ffff;
constexpr uint64_t launchMask = 0xfff;

constexpr uint64_t launch(uint64_t s) {
    return s >> launchShift;
}
constexpr uint64_t block(uint64_t s) {
    return s >> blockShift & blockMask;
}
constexpr uint64_t lane(uint64_t s) {
    return s >> laneShift & laneMask;
}
constexpr uint64_t epoch(uint64_t s) {
    return s >> epochShift & epochMask;
}
constexpr uint64_t warpEpoch(uint64_t s) {
    return s >> warpShift & warpMask;
}
constexpr bool strong(uint64_t s) {
    return s & 1;
}
constexpr uint64_t make(uint64_t launch, uint64_t block, uint64_t lane, uint64_t epoch,
                        uint64_t warpEpoch) {
    return (launch & launchMask) << launchShift | (block & blockMask) << blockShift |
           lane << laneShift | (epoch & epochMask) << epochShift |
           (warpEpoch & warpMask) << warpShift;
}

constexpr uint64_t blockKey(uint64_t number) {
    return number & blockMask;
}
constexpr uint64_t wrappedEpoch(uint64_t epoch) {
    return epoch & epochMask;
}
// Whether an epoch of a stamp came before this one, which has not wrapped around.
constexpr bool earlier(uint64_t ofStamp, uint64_t epoch) {
    const uint64_t between = (epoch - ofStamp) & epochMask;
    return between != 0 && between <= epochMask / 2;
}

}  // namespace emulated::stamp

namespace emulated {

struct Shadow;

// The shadow of all device memory.
Shadow* deviceShadow();
// The number of the next launch, for stamps.
uint64_t nextLaunch();
// Memory was freed: its accesses are forgotten.
void forgetAccesses(uint64_t address, std::size_t bytes);

}  // namespace emulated
