// Blocks of Householder reflectors on the device: H = I - V T V^H, as LAPACK's xLARFT and xLARFB
// form and apply them.
#pragma once

#include "common/complex.h"
#include "cudalib/workspace_pool.h"

namespace lumo {

// How a factorisation leaves its reflectors. H is the product of a block's reflectors in the order
// in which xLARFT multiplies them.
enum class Reflectors {
    ofQr,  // columns of V below a unit lower triangle; T upper triangular; Q = H
    ofLq,  // rows of V^H right of a unit upper triangle; T upper triangular; Q = H^H
    ofRq,  // rows of V^H left of a unit lower triangle; T lower triangular; Q = H^H
};

// Workspace for one block at a time, of up to `width` reflectors: 2 width^2 elements on the
// device. V is a plain matrix while it is at work: order x count for ofQr, else count x order.
template <class T>
class BlockReflector {
  public:
    BlockReflector(Reflectors kind, int width);

    // Takes `count` reflectors of order `order` where they lie. Where their unit triangle meets the
    // matrix's own triangle, the matrix's elements are kept and the unit triangle is written out,
    // until restore(). T is the caller's to bring, to t().
    void expose(T* v, int ldv, int order, int count);
    void restore();
    // T, width x width.
    T* t() const { return t_.data(); }

    // Takes reflectors from a matrix to `copy`, as many elements, and forms T from them and their
    // scalar factors in device memory.
    void take(const T* v, int ldv, int order, int count, T* copy, const T* tau);

    // C := op(H) C for an order x n matrix, or C op(H) for an n x order one: side "L" or "R", trans
    // "N" or, for H^H, "C". `work`: count x n elements.
    void apply(char side, char trans, int n, T* c, int ldc, T* work) const;

  private:
    void use(T* v, int ldv, int order, int count);
    T* triangle() const;
    void writeUnitTriangle() const;

    const Reflectors kind_;
    const int width_;
    cudalib::Workspace<T> t_, other_;  // what expose() keeps, or the Gram matrix of take()
    T* v_ = nullptr;
    int ldv_ = 0, order_ = 0, count_ = 0;
};

}  // namespace lumo
