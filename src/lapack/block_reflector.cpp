#include "lapack/block_reflector.h"

#include "basic/Copy/Copy.h"
#include "basic/Set/Set.h"
#include "basic/TriangularFactor/TriangularFactor.h"
#include "blas/cublas.h"
#include "blas/gemm.h"
#include "common/matrix.h"

namespace lumo {

template <class T>
BlockReflector<T>::BlockReflector(Reflectors kind, int width)
    : kind_(kind),
      width_(width),
      t_(std::size_t(width) * std::size_t(width)),
      other_(std::size_t(width) * std::size_t(width)) {}

template <class T>
void BlockReflector<T>::use(T* v, int ldv, int order, int count) {
    v_ = v;
    ldv_ = ldv;
    order_ = order;
    count_ = count;
}

template <class T>
T* BlockReflector<T>::triangle() const {
    return kind_ == Reflectors::ofRq ? at(v_, ldv_, 0, order_ - count_) : v_;
}

template <class T>
void BlockReflector<T>::writeUnitTriangle() const {
    setTriangle<0>(kind_ == Reflectors::ofLq ? 'U' : 'L', 'U', count_, count_, triangle(), ldv_);
}

template <class T>
void BlockReflector<T>::expose(T* v, int ldv, int order, int count) {
    use(v, ldv, order, count);
    copyMatrix(count, count, triangle(), ldv, other_.data(), width_);
    writeUnitTriangle();
}

template <class T>
void BlockReflector<T>::restore() {
    copyMatrix(count_, count_, other_.data(), width_, triangle(), ldv_);
}

template <class T>
void BlockReflector<T>::take(const T* v, int ldv, int order, int count, T* copy, const T* tau) {
    const bool columns = kind_ == Reflectors::ofQr, forward = kind_ != Reflectors::ofRq;
    use(copy, columns ? order : count, order, count);
    copyMatrix(ldv_, columns ? count : order, v, ldv, copy, ldv_);
    writeUnitTriangle();

    using Real = RealOf<T>;
    cublas::herk(forward ? 'U' : 'L', columns ? 'C' : 'N', count, order, Real(1), copy, ldv_,
                 Real(0), other_.data(), width_);
    triangularFactor(forward, count, other_.data(), width_, tau, t_.data(), width_);
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
