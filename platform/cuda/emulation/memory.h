// Memory of the emulated GPU: device memory, which the host cannot touch, and page-locked memory.
// Both are mapped a second time, for the emulation's own use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

namespace emulated {

struct Allocation {
    uint64_t address;
    std::size_t bytes;
    int device;

    uint64_t end() const { return address + bytes; }
};

// A range of addresses to allocate from. None is handed out twice, so that a pointer to memory that
// was freed leads nowhere, and between two allocations lies a gap.
class Arena {
  public:
    Arena(std::size_t bytes, bool forHost);

    uint64_t take(std::size_t bytes, int device);
    // Takes the allocation that begins there back, and its content.
    void giveBack(uint64_t address);

    // The allocation that an address lies in or directly behind, null if there is none.
    const Allocation* find(uint64_t address) const;
    const Allocation* startingAt(uint64_t address) const;
    bool contains(uint64_t address) const { return address >= base_ && address < end_; }
    // Where the emulation reaches what a program has at this address.
    void* reach(uint64_t address) const {
        return reinterpret_cast<void*>(address + uint64_t(toAlias()));
    }
    std::ptrdiff_t toAlias() const { return std::ptrdiff_t(alias_ - base_); }
    uint64_t base() const { return base_; }

  private:
    uint64_t base_, alias_, next_, end_;
    int file_;
    bool forHost_;
    std::map<uint64_t, Allocation> live_;
};

constexpr std::size_t deviceArenaBytes = std::size_t(1) << 38;
Arena& deviceMemory();
Arena& pageLockedMemory();

enum class Place { device, pageLocked, pageable, nowhere };
Place placeOf(const void* pointer);

// Where the emulation reaches a range of the current device's memory; null, with a finding and an
// error that stays, if it is not wholly in one allocation.
void* deviceRange(const void* address, std::size_t bytes, const char* what);

// The device's memory in use, CUBLAS's own included.
bool shortOfMemory(std::size_t bytes);
void useMemory(std::ptrdiff_t bytes);
std::size_t memoryInUse();

}  // namespace emulated
