#pragma once

#include <cstddef>

namespace software {

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

}  // namespace software
