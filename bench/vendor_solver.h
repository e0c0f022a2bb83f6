// The CUDA toolkit's dense solver (cuSOLVER), loaded at run time where there is one, to compare
// with on a GPU. Its LU works on matrices in device memory.
#pragma once

#include <complex>
#include <memory>

namespace bench {

class VendorSolver {
  public:
    // Null on a machine without the library or without a GPU to run it on.
    static const VendorSolver* get();

    // xGETRF on an n x n device matrix, then the wait for its end. Returns 0 on success. The
    // workspace, `ipiv` (n) and `info` (1) are the library's own and made by prepare().
    template <class T>
    int getrf(int n, T* a) const;
    // Allocates what getrf needs for this order; returns false if there is no memory.
    template <class T>
    bool prepare(int n, T* a) const;

  private:
    struct Functions;
    VendorSolver() = default;
    std::unique_ptr<Functions> f_;
    void* handle_ = nullptr;
    mutable void* workspace_ = nullptr;
    mutable void* pivots_ = nullptr;  // n pivots, then info
};

}  // namespace bench
