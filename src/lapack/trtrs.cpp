#include "lapack/trtrs.h"

#include <algorithm>
#include <vector>

#include "blas/cublas.h"
#include "common/element_types.h"
#include "common/exceptions.h"
#include "common/letters.h"
#include "cudalib/exceptions.h"
#include "cudalib/transfer.h"

namespace lumo {

template <class T>
void trtrs(char uplo, char trans, char diag, int n, int nrhs, const T* a, int lda, T* b, int ldb) {
    uplo = upper(uplo);
    trans = upper(trans);
    diag = upper(diag);
    if (!isOneOf(uplo, "UL")) throwArgumentError(-1);
    if (!isOneOf(trans, "NTC")) throwArgumentError(-2);
    if (!isOneOf(diag, "NU")) throwArgumentError(-3);
    if (n < 0) throwArgumentError(-4);
    if (nrhs < 0) throwArgumentError(-5);
    if (lda < std::max(1, n)) throwArgumentError(-7);
    if (ldb < std::max(1, n)) throwArgumentError(-9);
    if (n == 0) return;
    if (diag == 'N') {
        std::vector<T> diagonal(std::size_t(n), T(0));
        cudalib::checkCudaError(cudalib::copy2D(diagonal.data(), sizeof(T), a,
                                                (std::size_t(lda) + 1) * sizeof(T), sizeof(T),
                                                std::size_t(n), cudaMemcpyDeviceToHost));
        const auto zero = std::find(diagonal.begin(), diagonal.end(), T(0));
        if (zero != diagonal.end()) throwDataError(int(zero - diagonal.begin()) + 1);
    }
    cublas::trsm('L', uplo, trans, diag, n, nrhs, T(1), a, lda, b, ldb);
}

LUMO_INSTANTIATE(trtrs)

}  // namespace lumo
