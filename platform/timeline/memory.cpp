// Memory that is accounted and not backed: a part of the address space. What a host reads of it, a
// few numbers that were written there, takes the pages that they lie on.
#include <sys/mman.h>

#include <algorithm>

#include "platform/timeline/state.h"

namespace timeline {

void* Memory::reserve(std::size_t bytes, Place place, bool touchable) {
    void* const at = mmap(nullptr, std::max<std::size_t>(bytes, 1),
                          touchable ? PROT_READ | PROT_WRITE : PROT_NONE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (at == MAP_FAILED) {
        outOfAddresses = true;
        return nullptr;
    }
    blocks[static_cast<char*>(at)] = {bytes, place, false};
    return at;
}

void Memory::release(void* pointer) {
    const auto found = blocks.find(static_cast<char*>(pointer));
    munmap(found->first, std::max<std::size_t>(found->second.bytes, 1));
    blocks.erase(found);
}

void Memory::clear() {
    while (!blocks.empty()) release(blocks.begin()->first);
    used = kept = peak = 0;
    outOfAddresses = false;
}

const Block* Memory::find(const void* pointer) const {
    auto* const at = static_cast<char*>(const_cast<void*>(pointer));
    auto after = blocks.upper_bound(at);
    if (after == blocks.begin()) return nullptr;
    --after;
    return std::size_t(at - after->first) < after->second.bytes ? &after->second : nullptr;
}

Place Memory::placeOf(const void* pointer) const {
    const Block* block = find(pointer);
    return block ? block->place : Place::elsewhere;
}

namespace {

// Gives kept blocks back, the largest first, until no more than this is kept.
void discard(std::size_t downTo) {
    Memory& m = state().memory;
    while (m.kept > downTo) {
        auto largest = m.blocks.end();
        for (auto at = m.blocks.begin(); at != m.blocks.end(); ++at)
            if (at->second.kept && at->second.place == Place::device &&
                (largest == m.blocks.end() || at->second.bytes > largest->second.bytes))
                largest = at;
        m.kept -= largest->second.bytes;
        m.used -= largest->second.bytes;
        m.release(largest->first);
    }
}

// A kept block that is not more than twice as large.
void* takeKept(std::size_t bytes, Place place) {
    Memory& m = state().memory;
    Block* best = nullptr;
    char* at = nullptr;
    for (auto& [pointer, block] : m.blocks)
        if (block.kept && block.place == place && block.bytes >= bytes &&
            block.bytes / 2 <= bytes && (!best || block.bytes < best->bytes)) {
            best = &block;
            at = pointer;
        }
    if (!best) return nullptr;
    best->kept = false;
    if (place == Place::device) m.kept -= best->bytes;
    return at;
}

int allocate(void** pointer, std::size_t bytes) {
    State& s = state();
    Memory& m = s.memory;
    *pointer = nullptr;
    if (bytes == 0) return cudaSuccess;
    if ((*pointer = takeKept(bytes, Place::device))) return cudaSuccess;
    ++s.counts.allocations;
    s.clock.host(Kind::allocation, s.machine.allocate + double(bytes) * s.machine.allocateByte);
    const auto fits = [&] { return double(m.used) + double(bytes) <= s.machine.memory; };
    if (!fits()) discard(0);
    if (!fits()) return cudaErrorMemoryAllocation;
    *pointer = m.reserve(bytes, Place::device, true);
    if (!*pointer) return cudaErrorMemoryAllocation;
    m.used += bytes;
    m.peak = std::max(m.peak, m.used);
    return cudaSuccess;
}

}  // namespace

int memGetInfo(std::size_t* free, std::size_t* total) {
    *total = std::size_t(state().machine.memory);
    *free = *total - state().memory.used;
    return cudaSuccess;
}

int isDevicePointer(const void* pointer) {
    return state().memory.placeOf(pointer) == Place::device;
}

int malloc(void** pointer, std::size_t bytes) {
    const Entry entry;
    return reported(allocate(pointer, bytes));
}

int mallocPitch(void** pointer, std::size_t* pitch, std::size_t width, std::size_t height) {
    const Entry entry;
    *pitch = (width + 511) / 512 * 512;
    return reported(allocate(pointer, *pitch * height));
}

int mallocHost(void** pointer, std::size_t bytes) {
    const Entry entry;
    State& s = state();
    *pointer = nullptr;
    if (bytes == 0) return cudaSuccess;
    if ((*pointer = takeKept(bytes, Place::pageLocked))) return cudaSuccess;
    ++s.counts.allocations;
    s.clock.host(Kind::allocation, s.machine.allocateHost);
    *pointer = s.memory.reserve(bytes, Place::pageLocked, true);
    return reported(*pointer ? cudaSuccess : cudaErrorMemoryAllocation);
}

int free(void* pointer) {
    const Entry entry;
    State& s = state();
    if (!pointer) return cudaSuccess;
    const auto found = s.memory.blocks.find(static_cast<char*>(pointer));
    if (found == s.memory.blocks.end() || found->second.place != Place::device ||
        found->second.kept)
        return reported(cudaErrorInvalidDevicePointer);
    // To give memory back waits for what may still work on it.
    s.clock.wait(reachedBy(nullptr), s.machine.synchronize);
    found->second.kept = true;
    s.memory.kept += found->second.bytes;
    discard(std::size_t(s.machine.keptPart * s.machine.memory));
    return cudaSuccess;
}

int freeHost(void* pointer) {
    const Entry entry;
    State& s = state();
    if (!pointer) return cudaSuccess;
    const auto found = s.memory.blocks.find(static_cast<char*>(pointer));
    if (found == s.memory.blocks.end() || found->second.place != Place::pageLocked ||
        found->second.kept)
        return reported(cudaErrorInvalidHostPointer);
    found->second.kept = true;
    return cudaSuccess;
}

int releaseKept() {
    const Entry entry;
    discard(0);
    return cudaSuccess;
}

}  // namespace timeline
