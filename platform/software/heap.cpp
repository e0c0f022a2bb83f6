#include "platform/software/heap.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

namespace software {
namespace {

constexpr std::size_t alignment = 256;  // as the CUDA runtime's
constexpr std::size_t hugePage = std::size_t(2) << 20;
constexpr int poison = 0xFF;  // NaN as a floating-point number, -1 as an integer
constexpr int canary = 0xA5;

std::size_t roundUp(std::size_t bytes, std::size_t granule) {
    return (bytes + granule - 1) / granule * granule;
}

std::size_t pageSize() {
    static const std::size_t size = sysconf(_SC_PAGESIZE);
    return size;
}

std::byte* mapped(std::size_t bytes, int protection) {
    void* p = mmap(nullptr, bytes, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return p == MAP_FAILED ? nullptr : static_cast<std::byte*>(p);
}

// Addresses that nobody can touch and that are never given out twice.
std::byte* untouchable(std::size_t bytes) {
    static std::mutex mutex;
    static std::byte* next = nullptr;
    static std::size_t left = 0;
    std::lock_guard<std::mutex> lock(mutex);
    if (left < bytes) {
        left = std::max(bytes, std::size_t(1) << 34);
        next = mapped(left, PROT_NONE);
        if (!next) return left = 0, nullptr;
    }
    std::byte* p = next;
    next += bytes;
    left -= bytes;
    return p;
}

// A capacity from which a block is worth pages of its own, huge ones if the system has them.
bool ownPages(std::size_t capacity) {
    return capacity >= hugePage;
}

std::byte* obtain(std::size_t capacity) {
    void* p = nullptr;
    if (posix_memalign(&p, ownPages(capacity) ? hugePage : alignment, capacity) != 0)
        return nullptr;
    if (ownPages(capacity)) madvise(p, capacity, MADV_HUGEPAGE);
    return static_cast<std::byte*>(p);
}

}  // namespace

void Heap::reset(Mode mode, std::size_t keepAtMost) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto& [address, block] : live_) {
        if (mode_ == Mode::reuse)
            free(block.memory);
        else
            discardStrict(block);
    }
    live_.clear();
    discardKept(0);
    damage_ = 0;
    mode_ = mode;
    keepAtMost_ = keepAtMost;
}

void* Heap::allocate(std::size_t bytes, int owner) {
    if (bytes > PTRDIFF_MAX) return nullptr;  // rounding it up would make it small
    std::lock_guard<std::mutex> lock(mutex_);
    return mode_ == Mode::reuse ? allocateReused(bytes, owner) : allocateStrict(bytes, owner);
}

void* Heap::allocateReused(std::size_t bytes, int owner) {
    std::size_t capacity = roundUp(bytes, alignment);
    if (ownPages(capacity)) capacity = roundUp(capacity, hugePage);
    std::byte* memory = nullptr;
    auto fit = kept_.lower_bound(capacity);
    if (fit != kept_.end() && fit->first <= capacity + capacity / 4) {
        capacity = fit->first;
        memory = fit->second;
        keptBytes_ -= capacity;
        kept_.erase(fit);
    } else {
        memory = obtain(capacity);
        if (!memory && keptBytes_ > 0) {
            discardKept(0);
            memory = obtain(capacity);
        }
        if (!memory) return nullptr;
    }
    live_[reinterpret_cast<std::uintptr_t>(memory)] = {memory, bytes, capacity, owner};
    return memory;
}

// The block ends (but for alignment) where an untouchable page begins. A canary watches the bytes
// that its pages have before it and behind it.
void* Heap::allocateStrict(std::size_t bytes, int owner) {
    const std::size_t used = roundUp(bytes, alignment);
    const std::size_t pages = roundUp(used, pageSize());
    std::byte* memory = mapped(pages + pageSize(), PROT_READ | PROT_WRITE);
    if (!memory) return nullptr;
    mprotect(memory + pages, pageSize(), PROT_NONE);
    const std::size_t start = pages - used;
    const Block block{memory + start, bytes, used, owner};
    std::memset(block.memory, poison, bytes);
    plantCanary(block);

    std::byte* seen = memory;
    if (mode_ == Mode::strictSeparate && !(seen = untouchable(pages + pageSize()))) {
        munmap(memory, pages + pageSize());
        return nullptr;
    }
    live_[reinterpret_cast<std::uintptr_t>(seen + start)] = block;
    return seen + start;
}

bool Heap::release(void* pointer, std::size_t& bytes, int& owner) {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = live_.find(reinterpret_cast<std::uintptr_t>(pointer));
    if (found == live_.end()) return false;
    const Block block = found->second;
    live_.erase(found);
    bytes = block.size;
    owner = block.owner;
    if (mode_ != Mode::reuse) {
        damage_ += damaged(block);
        discardStrict(block);
    } else if (block.capacity > keepAtMost_) {
        free(block.memory);
    } else {
        discardKept(keepAtMost_ - block.capacity);
        kept_.emplace(block.capacity, block.memory);
        keptBytes_ += block.capacity;
    }
    return true;
}

void Heap::trim() {
    std::lock_guard<std::mutex> lock(mutex_);
    discardKept(0);
}

void Heap::discardKept(std::size_t downTo) {
    while (keptBytes_ > downTo) {
        auto largest = std::prev(kept_.end());
        keptBytes_ -= largest->first;
        free(largest->second);
        kept_.erase(largest);
    }
}

Heap::Blocks::const_iterator Heap::find(const void* pointer) const {
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    auto next = live_.upper_bound(address);
    if (next == live_.begin()) return live_.end();
    auto block = std::prev(next);
    return address - block->first <= block->second.size ? block : live_.end();
}

bool Heap::contains(const void* pointer) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return find(pointer) != live_.end();
}

void* Heap::address(const void* pointer, std::size_t bytes) const {
    if (mode_ == Mode::reuse) return const_cast<void*>(pointer);
    std::lock_guard<std::mutex> lock(mutex_);
    auto block = find(pointer);
    if (block == live_.end()) return nullptr;
    const std::size_t offset = reinterpret_cast<std::uintptr_t>(pointer) - block->first;
    if (bytes > block->second.size - offset) return nullptr;
    return block->second.memory + offset;
}

int Heap::takeDamage() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (mode_ != Mode::reuse)
        for (auto& [address, block] : live_)
            if (damaged(block)) {
                ++damage_;
                plantCanary(block);
            }
    return std::exchange(damage_, 0);
}

std::byte* Heap::firstPage(const Block& block) {
    return block.memory + block.capacity - roundUp(block.capacity, pageSize());
}

void Heap::plantCanary(const Block& block) {
    std::byte* pages = firstPage(block);
    std::memset(pages, canary, std::size_t(block.memory - pages));
    std::memset(block.memory + block.size, canary, block.capacity - block.size);
}

bool Heap::damaged(const Block& block) {
    auto alive = [](std::byte b) { return b == std::byte(canary); };
    return !std::all_of(firstPage(block), block.memory, alive) ||
           !std::all_of(block.memory + block.size, block.memory + block.capacity, alive);
}

void Heap::discardStrict(const Block& block) {
    munmap(firstPage(block), roundUp(block.capacity, pageSize()) + pageSize());
}

}  // namespace software
