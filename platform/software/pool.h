// The threads of the software device, and the order in which they work.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/table.h"

namespace software {

// Items that may run in any order and on any threads: item(0) ... item(count - 1).
struct Operation {
    std::function<void(std::size_t)> item;
    std::size_t count = 1;
    std::size_t work = 0;  // elementary operations of all items: what a thread is worth waking for
};

// Runs item(context, k) for every k below count and returns when all are done. The caller works
// too; other threads are woken only if `work`, a count of elementary operations, is worth it.
void parallel(std::size_t count, std::size_t work, void (*item)(const void*, std::size_t),
              const void* context);

// The same for a callable: f(k).
template <class F>
void parallelFor(std::size_t count, std::size_t work, const F& f) {
    parallel(
        count, work,
        [](const void* context, std::size_t k) { (*static_cast<const F*>(context))(k); }, &f);
}

// The calling thread's operations, one after the other in the order of issue, whatever their
// stream, on all threads of the device. What is next in line has run when this returns.
void enqueue(platform::Stream stream, Operation operation);
// Whether there is nothing for an operation of so much work to wait for, and no thread that it
// would be worth waking.
bool isNextInLine(std::size_t work);
// Works until the calling thread's operations are done: those of a stream, with all before them,
// or all of them.
void finish(platform::Stream stream);
void finishAll();

}  // namespace software
