#include "lapack/sygvd.h"

#include <utility>

#include "basic/Transpose/Transpose.h"
#include "blas/cublas.h"
#include "common/exceptions.h"
#include "cudalib/exceptions.h"
#include "lapack/potrf.h"
#include "lapack/syevd.h"
#include "lapack/sygst.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// One small enough is the CPU library's, as it is of a host caller.
template <class T>
void solveStandard(const Syevd<T>& problem) {
    if (platform::sharesMemory()) {
        cudalib::synchronizeAndCheck();
        if (problem.isSmall()) {
            problem.runOnCpu();
            return;
        }
    }
    problem.run();
}

}  // namespace

// B = L L^H. With y = L^H x, or L^-1 x for itype 3, A x = lambda B x (1), A B x = lambda x (2) and
// B A x = lambda x (3) are C y = lambda y with sygst's C.
template <class T>
void Sygvd<T>::run() const {
    const bool isUpper = uplo == 'U';
    if (const int minor = potrf(uplo, n, b, ldb)) throwDataError(n + minor);
    const auto turn = [&] {
        for (auto [x, ld] : {std::pair(a, lda), std::pair(b, ldb)})
            transposeInplace(x, std::size_t(ld), std::size_t(n), isComplex<T>);
    };
    // sygst knows lower triangles. What lies in the others comes back.
    if (isUpper) turn();
    sygst(itype, n, a, lda, b, ldb);
    if (isUpper) turn();
    solveStandard(Syevd<T>{jobz, uplo, n, a, lda, w});
    if (jobz == 'N') return;
    if (itype == 3)
        cublas::trmm('L', uplo, isUpper ? 'C' : 'N', 'N', n, n, T(1), b, ldb, a, lda);
    else
        cublas::trsm('L', uplo, isUpper ? 'N' : 'C', 'N', n, n, T(1), b, ldb, a, lda);
}

LUMO_INSTANTIATE_MEMBERS(Sygvd)
LUMO_EXPORT_S_D(sygvd, Sygvd)
LUMO_EXPORT_C_Z(hegvd, Sygvd)

}  // namespace lumo
