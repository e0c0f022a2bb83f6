#include "lapack/block_reflector.h"

#include <algorithm>
#include <vector>

#include "basic/Copy/Copy.h"
#include "basic/Set/Set.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/exceptions.h"
#include "common/matrix.h"
#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"

namespace lumo {
namespace {

// T from G = V^H V, of which the triangle of T's kind is given, in place: column i of T is
// -tau(i) T' G(:, i), where T' is the triangular factor of the reflectors before it in the product
// (xLARFT's recursion).
template <class T>
void triangularFactor(bool forward, int count, T* t, const T* tau) {
    const MatrixView<T> factor{t, count};
    for (int step = 0; step < count; ++step) {
        const int i = forward ? step : count - 1 - step;
        const int begin = forward ? 0 : i + 1, end = forward ? i : count;
        const T minusTau = T(0) - tau[i];
        for (int r = begin; r < end; ++r) factor(r, i) = minusTau * factor(r, i);
        for (int k = 0; k < end - begin; ++k) {
            const int l = forward ? begin + k : end - 1 - k;
            const T x = factor(l, i);
            const int from = forward ? begin : l + 1, to = forward ? l : end;
            for (int r = from; r < to; ++r) factor(r, i) = factor(r, i) + factor(r, l) * x;
            factor(l, i) = factor(l, l) * x;
        }
        factor(i, i) = tau[i];
    }
}

}  // namespace

template <class T>
BlockReflector<T>::BlockReflector(Reflectors kind, int width)
    : kind_(kind),
      width_(width),
      t_(std::size_t(width) * std::size_t(width)),
      saved_(std::size_t(width) * std::size_t(width)) {}

template <class T>
T* BlockReflector<T>::triangle() const {
    return kind_ == Reflectors::ofRq ? at(v_, ldv_, 0, order_ - count_) : v_;
}

template <class T>
void BlockReflector<T>::expose(T* v, int ldv, int order, int count) {
    v_ = v;
    ldv_ = ldv;
    order_ = order;
    count_ = count;
    copyMatrix(count, count, triangle(), ldv, saved_.data(), width_);
    setTriangle<0>(kind_ == Reflectors::ofLq ? 'U' : 'L', 'U', count, count, triangle(), ldv);
}

template <class T>
void BlockReflector<T>::restore() {
    copyMatrix(count_, count_, saved_.data(), width_, triangle(), ldv_);
}

template <class T>
void BlockReflector<T>::form(const T* tau) {
    using Real = RealOf<T>;
    const bool forward = kind_ != Reflectors::ofRq;
    cublas::herk(forward ? 'U' : 'L', kind_ == Reflectors::ofQr ? 'C' : 'N', count_, order_,
                 Real(1), v_, ldv_, Real(0), t_.data(), width_);
    const std::size_t row = std::size_t(count_) * sizeof(T),
                      pitch = std::size_t(width_) * sizeof(T);
    std::vector<T> host(std::size_t(count_) * std::size_t(count_));
    cudalib::checkCudaError(cudalib::copy2D(host.data(), row, t_.data(), pitch, row,
                                            std::size_t(count_), cudaMemcpyDeviceToHost));
    triangularFactor(forward, count_, host.data(), tau);
    cudalib::checkCudaError(cudalib::copy2D(t_.data(), pitch, host.data(), row, row,
                                            std::size_t(count_), cudaMemcpyHostToDevice));
}

template <class T>
void BlockReflector<T>::apply(char side, char trans, int n, T* c, int ldc, T* work) const {
    if (n <= 0) return;
    const T zero(0), one(1), minusOne(-1);
    const char uplo = kind_ == Reflectors::ofRq ? 'L' : 'U';
    // What turns V as it is stored into V and into V^H.
    const bool columns = kind_ == Reflectors::ofQr;
    const char plain = columns ? 'N' : 'C', adjoint = columns ? 'C' : 'N';
    if (side == 'L') {  // work := op(T) V^H C, count x n
        gemm(adjoint, 'N', count_, n, order_, one, v_, ldv_, c, ldc, zero, work, count_);
        cublas::trmm('L', uplo, trans, 'N', count_, n, one, t_.data(), width_, work, count_);
        gemm(plain, 'N', order_, n, count_, minusOne, v_, ldv_, work, count_, one, c, ldc);
    } else {  // work := C V op(T), n x count
        gemm('N', plain, n, count_, order_, one, c, ldc, v_, ldv_, zero, work, n);
        cublas::trmm('R', uplo, trans, 'N', n, count_, one, t_.data(), width_, work, n);
        gemm('N', adjoint, n, order_, count_, minusOne, work, n, v_, ldv_, one, c, ldc);
    }
}

template class BlockReflector<float>;
template class BlockReflector<double>;
template class BlockReflector<Complex<float>>;
template class BlockReflector<Complex<double>>;

}  // namespace lumo
