// Reference-counted device and page-locked memory.
#pragma once

#include <algorithm>
#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

#include "cudalib/allocators.h"

namespace cudalib {

// A handle to `depth` matrices of one extent, allocated and copied by an Alloc<T>. Copies of the
// handle share the memory; the last one frees it. An empty handle has no memory.
template <class T, template <class> class Alloc>
class ManagedMemory {
  public:
    ManagedMemory() : impl_(boost::make_shared<impl>()) {}

    // Allocates; throws as checkCudaError does. A zero extent allocates nothing.
    explicit ManagedMemory(Extent extent, unsigned depth = 1) : ManagedMemory() {
        impl_->rows = extent.rows;
        impl_->columns = extent.columns;
        impl_->depth = depth;
        if (!empty()) impl_->pointer = impl_->allocator.allocate(extent, depth);
    }

    // A handle to memory that belongs to somebody else and is never freed by it.
    static ManagedMemory borrow(T* pointer, Extent extent, std::size_t pitch, unsigned depth = 1) {
        ManagedMemory handle;
        *handle.impl_ = impl{pointer, extent.rows, extent.columns, depth, 1, {}};
        handle.impl_->allocator.setPitch(pitch);
        return handle;
    }

    T* data() const { return impl_->pointer; }
    unsigned rows() const { return impl_->rows; }
    unsigned columns() const { return impl_->columns; }
    unsigned depth() const { return impl_->depth; }
    Extent extent() const { return {impl_->rows, impl_->columns}; }
    bool empty() const { return !impl_->rows || !impl_->columns || !impl_->depth; }
    long useCount() const { return impl_.use_count(); }
    std::size_t bytes() const { return allocator().pitch() * columns() * depth() * sizeof(T); }

    // The leading dimension for CUBLAS and kernels. That of an empty handle is what LAPACK asks
    // of an empty matrix, max(1, rows).
    int leadingDimension() const {
        const std::size_t pitch = data() ? impl_->allocator.pitch() : rows();
        return int(std::max<std::size_t>(1, pitch));
    }

    Alloc<T>& allocator() const { return impl_->allocator; }

    // All elements from, or to, a host matrix with its own leading dimension.
    void copyFromHost(const T* host, std::size_t hostLd) const {
        if (empty()) return;
        const std::size_t pitch = allocator().pitch();
        allocator().copyFromHost2D(data(), pitch, pitch * columns(), host, hostLd,
                                   hostLd * columns(), extent(), depth());
    }
    void copyToHost(T* host, std::size_t hostLd) const {
        if (empty()) return;
        const std::size_t pitch = allocator().pitch();
        allocator().copyToHost2D(host, hostLd, hostLd * columns(), data(), pitch, pitch * columns(),
                                 extent(), depth());
    }

  private:
    struct impl {
        T* pointer = nullptr;
        unsigned rows = 0;
        unsigned columns = 0;
        unsigned depth = 0;
        unsigned char borrowed = 0;
        Alloc<T> allocator;

        impl() = default;
        impl(T* p, unsigned r, unsigned c, unsigned d, unsigned char b, Alloc<T> a)
            : pointer(p), rows(r), columns(c), depth(d), borrowed(b), allocator(a) {}
        impl& operator=(const impl&) = default;
        ~impl() {
            if (pointer && borrowed != 1) allocator.free(pointer);
        }
    };

    boost::shared_ptr<impl> impl_;
};

}  // namespace cudalib
