#include "blas/gemv/gemv.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/gemv/shape.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "cudalib/launch.h"

template <class T, int rows, int unrolled, bool conjugated>
void gemvt_k(int m, int n, int wholeRows, T alpha, const T* a, int lda, T beta, const T* x,
             int incx, T* y, int incy);

namespace lumo {
namespace {

struct DotProductMap {
    int n;
    dim3 blockShape() const { return {gemvtWidth, gemvtRows, 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(n, gemvtWidth)), 1, 1}; }
};

}  // namespace

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta,
          T* y, int incy) {
    trans = upper(trans);
    if (!isOneOf(trans, "NTC")) throwArgumentError(-1);
    if (m < 0) throwArgumentError(-2);
    if (n < 0) throwArgumentError(-3);
    if (lda < std::max(1, m)) throwArgumentError(-6);
    if (incx == 0) throwArgumentError(-8);
    if (incy == 0) throwArgumentError(-11);
    if (m == 0 || n == 0 || (alpha == T(0) && beta == T(1))) return;
    // A CPU's own BLAS has the faster one.
    if (trans == 'N' || incx < 0 || incy < 0 || platform::sharesMemory())
        return cublas::gemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
    auto kernel = trans == 'C' ? &gemvt_k<T, gemvtRows, 8, true> : &gemvt_k<T, gemvtRows, 8, false>;
    cudalib::launch(DotProductMap{n}, kernel, m, n, m / gemvtChunk * gemvtChunk, alpha, a, lda,
                    beta, x, incx, y, incy);
}

LUMO_INSTANTIATE(gemv)

}  // namespace lumo
