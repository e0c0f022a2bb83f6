#include "blas/gemv.h"

#include "blas/cublas.h"
#include "routine/exports.h"

namespace lumo {

template <class T>
void Gemv<T>::run() const {
    cublas::gemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy);
}

LUMO_EXPORT_S_D_C_Z(gemv, Gemv)

}  // namespace lumo
