// The bidiagonal reduction's panel that reads the matrix once a column.
#pragma once

#include "brd/both_products/both_products.h"
#include "brd/next_column/shape.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// Reduces the first columns and rows of m x n matrices, m >= n, to upper bidiagonal form. The rest
// is A - P W^H then, with reflectors and what they were multiplied by in turn:
// P = (v1 x1 v2 x2 ...), of m rows, and W = (y1 u1 y2 u2 ...), of n.
template <class T>
class BidiagonalPanel {
  public:
    // At most so many columns.
    static constexpr int most = mostPanelColumns;

    BidiagonalPanel(int m, int n, int columns)
        : rank_(2 * columns),
          ldp_((m + 15) / 16 * 16),
          ldw_(n),
          p_(std::size_t(ldp_) * std::size_t(rank_)),
          w_(std::size_t(n) * std::size_t(rank_)),
          parts_(std::size_t(ldp_) * std::size_t(mostParts<T>(n))),
          vectors_(std::size_t(n) + 3 * std::size_t(rank_)) {}

    // The first columns and rows of an m x n matrix, of at most the sizes it was made for, as
    // xGEBRD leaves them; and the rest is brought up to date. Nothing waits for the device.
    void reduce(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup) const;

  private:
    T* p(int i, int j) const { return p_.data() + std::size_t(j) * std::size_t(ldp_) + i; }
    T* w(int i, int j) const { return w_.data() + std::size_t(j) * std::size_t(ldw_) + i; }

    const int rank_, ldp_, ldw_;
    const cudalib::Workspace<T> p_, w_, parts_, vectors_;
};

}  // namespace lumo
