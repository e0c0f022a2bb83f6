// Device workspace that outlives the call that needed it, so that the next call need not
// allocate: cudaMalloc and cudaFree wait for the device.
#pragma once

#include <cstddef>

namespace cudalib {

// Each thread has its own pool. A held buffer serves a request that it fits without wasting more
// than the request's size; a thread holds at most `heldAtMost` idle buffers, and the smallest go
// first. Any allocation in the library that fails has all pools' idle buffers released and is
// tried once more.
class WorkspacePool {
  public:
    static constexpr std::size_t heldAtMost = 8;

    // A buffer of at least `bytes` bytes for the calling thread, null for 0 bytes. Throws as
    // checkCudaError does, and std::runtime_error "Memory Pool: bad request" for a size that no
    // device can have.
    static void* acquire(std::size_t bytes);
    // Takes back what `acquire` gave to this thread; null is allowed. Throws std::runtime_error
    // "MemoryPool: empty" if the thread has no such buffer out.
    static void release(void* buffer);

    static void releaseIdleOfThisThread();
    // All threads'. Returns whether there was anything to release.
    static bool releaseIdle();
};

// Workspace for `count` elements, taken from the pool and returned to it.
template <class T>
class Workspace {
  public:
    explicit Workspace(std::size_t count);
    ~Workspace() { WorkspacePool::release(data_); }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    T* data() const { return data_; }

  private:
    T* data_;
};

template <class T>
Workspace<T>::Workspace(std::size_t count)
    : data_(static_cast<T*>(WorkspacePool::acquire(count * sizeof(T)))) {}

}  // namespace cudalib
