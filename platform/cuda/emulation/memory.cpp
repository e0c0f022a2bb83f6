#include "platform/cuda/emulation/memory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/cuda/emulation/devices.h"
#include "platform/cuda/emulation/errors.h"
#include "platform/cuda/emulation/findings.h"
#include "platform/cuda/emulation/settings.h"

namespace emulated {
namespace {

constexpr std::size_t page = 4096, pageLockedArenaBytes = std::size_t(1) << 36;
std::size_t inUse = 0;

std::size_t wholePages(std::size_t bytes) {
    return (bytes + page - 1) / page * page;
}

void* mapped(std::size_t bytes, int protection, int file) {
    void* at = mmap(nullptr, bytes, protection, MAP_SHARED | MAP_NORESERVE, file, 0);
    if (at == MAP_FAILED) std::perror("emulated GPU: mmap"), std::abort();
    return at;
}

}  // namespace

Arena::Arena(std::size_t bytes, bool forHost) : forHost_(forHost) {
    file_ = memfd_create("emulated-gpu", 0);
    if (file_ < 0 || ftruncate(file_, off_t(bytes)) != 0)
        std::perror("emulated GPU: memory"), std::abort();
    base_ = next_ = uint64_t(mapped(bytes, forHost ? PROT_READ | PROT_WRITE : PROT_NONE, file_));
    alias_ = uint64_t(mapped(bytes, PROT_READ | PROT_WRITE, file_));
    end_ = base_ + bytes;
}

uint64_t Arena::take(std::size_t bytes, int device) {
    const std::size_t room = wholePages(bytes) + page;
    if (room > end_ - next_)
        std::fprintf(stderr, "emulated GPU: no addresses left\n"), std::abort();
    const uint64_t address = next_;
    next_ += room;
    live_[address] = {address, bytes, device};
    return address;
}

void Arena::giveBack(uint64_t address) {
    auto it = live_.find(address);
    const std::size_t room = wholePages(it->second.bytes);
    fallocate(file_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, off_t(address - base_),
              off_t(room));
    if (forHost_) mprotect(reinterpret_cast<void*>(address), room, PROT_NONE);
    live_.erase(it);
}

const Allocation* Arena::find(uint64_t address) const {
    auto it = live_.upper_bound(address);
    if (it == live_.begin()) return nullptr;
    --it;
    return address <= it->second.end() ? &it->second : nullptr;
}

const Allocation* Arena::startingAt(uint64_t address) const {
    auto it = live_.find(address);
    return it == live_.end() ? nullptr : &it->second;
}

Arena& deviceMemory() {
    static auto* arena = new Arena(deviceArenaBytes, false);
    return *arena;
}

Arena& pageLockedMemory() {
    static auto* arena = new Arena(pageLockedArenaBytes, true);
    return *arena;
}

Place placeOf(const void* pointer) {
    const auto a = uint64_t(pointer);
    if (deviceMemory().contains(a)) return deviceMemory().find(a) ? Place::device : Place::nowhere;
    if (pageLockedMemory().contains(a))
        return pageLockedMemory().find(a) ? Place::pageLocked : Place::nowhere;
    return Place::pageable;
}

void* deviceRange(const void* address, std::size_t bytes, const char* what) {
    const auto a = uint64_t(address);
    if (bytes == 0) return deviceMemory().reach(a);
    const Allocation* in = deviceMemory().contains(a) ? deviceMemory().find(a) : nullptr;
    if (!in || bytes > in->end() - a) {
        found(
            Kind::operand, "%s: %zu bytes at %p are not in one allocation of device memory, %s",
            what, bytes, address,
            in ? ("offset " + std::to_string(a - in->address) + " of " + std::to_string(in->bytes))
                     .c_str()
               : "in none");
        setStickyError(cudaErrorIllegalAddress);
        return nullptr;
    }
    if (in->device != currentDevice())
        found(Kind::device, "%s: memory of device %d on device %d", what, in->device,
              currentDevice());
    return deviceMemory().reach(a);
}

bool shortOfMemory(std::size_t bytes) {
    return bytes > settings().memory - inUse;
}

void useMemory(std::ptrdiff_t bytes) {
    inUse += std::size_t(bytes);
}

std::size_t memoryInUse() {
    return inUse;
}

}  // namespace emulated
