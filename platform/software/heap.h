// The memory of the software device, and the page-locked memory of its host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

namespace software {

// Blocks of one kind of memory, found again by any address inside them.
//
// In production a freed block is kept and handed out again: fresh pages cost more than the copy
// that first touches them. In strict mode every block is poisoned, ends at a page that nobody may
// touch, and goes back to the system when freed; if `separate`, the address that the caller sees
// is not where the bytes are, and using it faults.
class Heap {
  public:
    enum class Mode { reuse, strict, strictSeparate };

    // Drops every block, live or kept, and starts anew.
    void reset(Mode mode, std::size_t keepAtMost);

    // Null if the system has no memory.
    void* allocate(std::size_t bytes, int owner);
    // False if no block starts at `pointer`; else its size and owner come back.
    bool release(void* pointer, std::size_t& bytes, int& owner);
    // Gives the kept blocks back to the system.
    void trim();

    bool contains(const void* pointer) const;
    // Where the bytes behind `pointer` lie, if `bytes` bytes from there on belong to one block.
    // Elsewhere null. In production this is `pointer` itself, unchecked.
    void* address(const void* pointer, std::size_t bytes) const;

    // Blocks with a write just before or behind them since the last call.
    int takeDamage();

  private:
    struct Block {
        std::byte* memory;  // where the bytes are
        std::size_t size;
        std::size_t capacity;
        int owner;
    };
    using Blocks = std::map<std::uintptr_t, Block>;

    Blocks::const_iterator find(const void* pointer) const;
    void* allocateReused(std::size_t bytes, int owner);
    void* allocateStrict(std::size_t bytes, int owner);
    void discardKept(std::size_t downTo);
    static std::byte* firstPage(const Block& block);
    static void plantCanary(const Block& block);
    static bool damaged(const Block& block);
    static void discardStrict(const Block& block);

    mutable std::mutex mutex_;
    Mode mode_ = Mode::reuse;
    Blocks live_;                                  // by the address that the caller sees
    std::multimap<std::size_t, std::byte*> kept_;  // by capacity
    std::size_t keptBytes_ = 0;
    std::size_t keepAtMost_ = 0;
    int damage_ = 0;
};

}  // namespace software
