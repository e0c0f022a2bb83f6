// The rare cases of a lane's accesses: faults, and memory that it has not met before.
#include "platform/cuda/emulation/lane.h"

#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/memory.h"
#include "platform/cuda/emulation/settings.h"
#include "platform/cuda/emulation/team.h"

namespace emulated {

void Lane::fault(const char* what, uint64_t a, int bytes, bool write, int error) {
    found(Kind::memory, "%s: %s of %d bytes at %#llx, %s, block (%u,%u,%u) lane (%u,%u,%u)", what,
          write ? "a write" : "a read", bytes, static_cast<unsigned long long>(a),
          team->kernel().name, ctaid[0], ctaid[1], ctaid[2], tid[0], tid[1], tid[2]);
    setStickyError(error);
    throw KernelFault();
}

void Lane::findAllocation(uint64_t a, int bytes, bool write) {
    const Arena& arenaOfDevice = deviceMemory();
    const Allocation* in = arenaOfDevice.contains(a) ? arenaOfDevice.find(a) : nullptr;
    if (!in || a + uint64_t(bytes) > in->end())
        fault(placeOf(reinterpret_cast<void*>(a)) == Place::pageLocked
                  ? "page-locked memory in a kernel"
                  : "out of bounds",
              a, bytes, write, 700);
    low = in->address;
    high = in->end();
    if (in->device != currentDevice())
        found(Kind::device, "%s uses memory of device %d on device %d", team->kernel().name,
              in->device, currentDevice());
}

uint64_t Lane::ofRank(uint64_t a, uint32_t rank) {
    if (rank >= shape->blocksInCluster()) fault("no such block in the cluster", a, 0, false, 700);
    return sharedWindow + rank * sharedStride + a % sharedStride;
}

void* Lane::sharedOfOther(uint64_t a, int bytes, bool write, bool strong) {
    const uint64_t offset = a % sharedStride;
    Block* other = team->ofCluster(*block, uint32_t(a / sharedStride - 1));
    if (!other || offset + uint64_t(bytes) > sharedBytes)
        fault("shared memory out of bounds", a, bytes, write, 700);
    if (other->left()) fault("shared memory of a block that has ended", a, bytes, write, 700);
    const Lane& owner = other->lanes[0];
    if (owner.sharedShadow) raceShared(*this, owner.sharedShadow, offset, bytes, write, strong);
    markShared(owner.sharedWritten + offset, bytes, write, offset);
    return owner.sharedMemory + offset;
}

void Lane::overflowed() {
    if (settings().overflow && firstTime(Kind::overflow, team->kernel().name, ""))
        found(Kind::overflow, "a signed number of 32 bits in %s, block (%u,%u,%u) lane (%u,%u,%u)",
              team->kernel().name, ctaid[0], ctaid[1], ctaid[2], tid[0], tid[1], tid[2]);
}

void Lane::uninitialised(uint64_t offset) {
    if (firstTime(Kind::uninitialised, team->kernel().name, ""))
        found(Kind::uninitialised,
              "shared memory that nobody has written, offset %llu, in %s, block (%u,%u,%u) lane "
              "(%u,%u,%u)",
              static_cast<unsigned long long>(offset), team->kernel().name, ctaid[0], ctaid[1],
              ctaid[2], tid[0], tid[1], tid[2]);
}

}  // namespace emulated
