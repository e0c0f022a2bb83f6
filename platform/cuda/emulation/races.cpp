#include "platform/cuda/emulation/races.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>

#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/kernel.h"
#include "platform/cuda/emulation/knowledge.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/team.h"

namespace emulated {
namespace {

constexpr std::size_t word = 4, shadowBytes = deviceArenaBytes / word * sizeof(Shadow);

// Whether nothing orders an earlier access of the same launch and what the lane does now.
bool concurrent(uint64_t earlier, const Lane& lane) {
    const uint64_t now = lane.stamp;
    if (stamp::block(earlier) == stamp::block(now)) {
        if (stamp::lane(earlier) == stamp::lane(now)) return false;
        if (stamp::epoch(earlier) != stamp::epoch(now)) return false;
        const bool sameWarp = stamp::lane(earlier) / 32 == stamp::lane(now) / 32;
        if (sameWarp && stamp::warpEpoch(earlier) != stamp::warpEpoch(now)) return false;
    }
    return !lane.knowledge || !lane.knowledge->known || !lane.knowledge->known->covers(earlier);
}

void tell(const Lane& lane, const char* what, const char* space, uint64_t offset, uint64_t other) {
    const char* kernel = lane.team->kernel().name;
    if (!firstTime(Kind::race, kernel, what)) return;
    found(Kind::race, "%s in %s memory at %#llx, %s: block %llu lane %u after block %llu lane %llu",
          what, space, static_cast<unsigned long long>(offset), kernel,
          static_cast<unsigned long long>(lane.block->number), lane.linear,
          static_cast<unsigned long long>(stamp::block(other)),
          static_cast<unsigned long long>(stamp::lane(other)));
}

// Of readers the last two that differ are kept, and whether several blocks read: with more of them,
// a write can be told to race with one, but not with which.
void access(const Lane& lane, Shadow& s, const char* space, uint64_t offset, bool write,
            bool strong) {
    const uint64_t now = lane.stamp | uint64_t(strong), launch = stamp::launch(now);
    auto conflicts = [&](uint64_t earlier) {
        return stamp::launch(earlier) == launch && !(strong && stamp::strong(earlier)) &&
               concurrent(earlier, lane);
    };
    if (conflicts(s.writer))
        tell(lane, write ? "a write after a write" : "a read after a write", space, offset,
             s.writer);
    if (write) {
        for (uint64_t reader : {s.reader, s.before})
            if (conflicts(reader)) tell(lane, "a write after a read", space, offset, reader);
        const bool others = (s.blocks & 1) || stamp::block(s.blocks) != stamp::block(now);
        // Who has learnt of other blocks may know of their reads.
        const bool learnt = lane.knowledge && lane.knowledge->known;
        if (stamp::launch(s.blocks) == launch && others && !learnt)
            tell(lane, "a write after another block's read", space, offset, s.blocks);
        s.writer = now;
        return;
    }
    if (s.reader >> stamp::laneShift != now >> stamp::laneShift) s.before = s.reader;
    s.reader = now;
    if (strong) return;
    if (stamp::launch(s.blocks) != launch)
        s.blocks = now & ~uint64_t(1);
    else if (stamp::block(s.blocks) != stamp::block(now))
        s.blocks |= 1;
}

}  // namespace

void Lane::raceGlobal(uint64_t a, int bytes, bool write, bool strong) {
    for (uint64_t at = (a - arena) / word; at <= (a - arena + uint64_t(bytes) - 1) / word; ++at)
        access(*this, globalShadow[at], "global", a, write, strong);
}

void Lane::raceShared(Lane& lane, Shadow* shadow, uint64_t offset, int bytes, bool write,
                      bool strong) {
    for (uint64_t at = offset / word; at <= (offset + uint64_t(bytes) - 1) / word; ++at)
        access(lane, shadow[at], "shared", offset, write, strong);
}

Shadow* deviceShadow() {
    static auto* shadow = [] {
        void* p = mmap(nullptr, shadowBytes, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED) std::perror("emulated GPU: shadow"), std::abort();
        return static_cast<Shadow*>(p);
    }();
    return shadow;
}

uint64_t nextLaunch() {
    static uint64_t launches = 0;
    // Numbers come again: the accesses of their last time are forgotten. None has number zero,
    // which is in memory that nobody has accessed.
    if ((++launches & stamp::launchMask) == 0) {
        ++launches;
        madvise(deviceShadow(), shadowBytes, MADV_DONTNEED);
    }
    return launches;
}

void forgetAccesses(uint64_t address, std::size_t bytes) {
    constexpr std::size_t page = 4096;
    madvise(deviceShadow() + (address - deviceMemory().base()) / word,
            (bytes + page - 1) / page * page / word * sizeof(Shadow), MADV_DONTNEED);
}

}  // namespace emulated
