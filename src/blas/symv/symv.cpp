#include "blas/symv/symv.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/symv/shape.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "common/state.h"
#include "cudalib/launch.h"

template <class T>
void symv_init_k(int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);
template <class T, uploType uplo, boundsType bounds, int order>
void symv_k(int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

namespace lumo {
namespace {

constexpr int leastOrder = 1024;

// A block for every tile on the diagonal.
struct TilesMap {
    int n;
    unsigned threads;
    dim3 blockShape() const { return {threads, 1, 1}; }
    dim3 gridShape() const { return {unsigned(cudalib::ceilDiv(n, symvTile)), 1, 1}; }
};

template <class T>
auto product(char uplo, int n) {
    if (uplo == 'L')
        return n % symvTile ? &symv_k<T, uploLower, boundsTested, symvTile>
                            : &symv_k<T, uploLower, boundsIgnored, symvTile>;
    return n % symvTile ? &symv_k<T, uploUpper, boundsTested, symvTile>
                        : &symv_k<T, uploUpper, boundsIgnored, symvTile>;
}

// Where BLAS has the first element of a vector; with a negative increment it lies last in memory.
template <class T>
T* firstElement(T* x, int n, int incx) {
    return incx < 0 ? x - std::ptrdiff_t(n - 1) * incx : x;
}

}  // namespace

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    if (computeCapability() < 20 || n < leastOrder)
        return cublas::symv(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
    uplo = upper(uplo);
    if (!isOneOf(uplo, "UL")) throwArgumentError(-1);
    if (lda < std::max(1, n)) throwArgumentError(-5);
    if (incx == 0) throwArgumentError(-7);
    if (incy == 0) throwArgumentError(-10);
    x = firstElement(x, n, incx);
    y = firstElement(y, n, incy);
    cudalib::launch(TilesMap{n, 256}, &symv_init_k<T>, n, alpha, a, lda, x, incx, beta, y, incy);
    cudalib::launch(TilesMap{n, symvTile}, product<T>(uplo, n), n, alpha, a, lda, x, incx, beta, y,
                    incy);
}

LUMO_INSTANTIATE(symv)

}  // namespace lumo
