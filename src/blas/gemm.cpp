#include "blas/gemm.h"

#include <algorithm>

#include "blas/cublas.h"
#include "blas/tuning.h"
#include "common/matrix.h"
#include "routine/exports.h"

namespace lumo {
namespace {

// The test for a split multiplies in 32 bits, and what does not fit wraps round.
bool beyondLimit(int ld, int extent) {
    return int(unsigned(ld) * unsigned(extent)) > blasTuning.gemmLimit - 1;
}
// A size of 0 or 1 has no two halves.
bool dividesLimit(int size) {
    return size > 0 && blasTuning.gemmLimit % size == 0;
}

}  // namespace

// Halves what CUBLAS of later devices does not take in one piece: the first half as a product
// of its own, then the second is looked at again.
template <class T>
void Gemm<T>::run() {
    foldLetters();
    if (m > 0 && n > 0) {
        requireMemory(c);
        if (k > 0) {
            requireMemory(a);
            requireMemory(b);
        }
    }
    // Without a product there may be no operands whose halves could be told.
    if (std::min({m, n, k}) > 0 && computeCapability() >= 20)
        while (splitFirstHalf()) {
        }
    cublas::gemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

// The cases ask for divisibility of different things, and only two for multiples of 96. This
// is on purpose; the results are right in any case. The order of the tests counts, so the first
// and the last stay apart.
template <class T>
bool Gemm<T>::splitFirstHalf() {
    if (plainA() && k >= 2 && beyondLimit(lda, k) && dividesLimit(lda))
        splitProduct();  // NOLINT(bugprone-branch-clone)
    else if (plainB() && n >= 2 && beyondLimit(ldb, n) && dividesLimit(n) && n % 96 == 0)
        splitColumns();
    else if (isOneOf(transa, "TC") && m >= 2 && beyondLimit(lda, m) && dividesLimit(m) &&
             m % 96 == 0)
        splitRows();
    else if (isOneOf(transb, "TC") && k >= 2 && beyondLimit(ldb, k) && dividesLimit(ldb))
        splitProduct();
    else
        return false;
    return true;
}

// By the extent that A and B share: the halves add up in C.
template <class T>
void Gemm<T>::splitProduct() {
    const int half = runFirstHalf(&Gemm::k);
    a = plainA() ? at(a, lda, 0, half) : at(a, lda, half, 0);
    b = plainB() ? at(b, ldb, half, 0) : at(b, ldb, 0, half);
    beta = T(1);
}
// By columns of B and C.
template <class T>
void Gemm<T>::splitColumns() {
    const int half = runFirstHalf(&Gemm::n);
    b = at(b, ldb, 0, half);
    c = at(c, ldc, 0, half);
}
// By columns of A, rows of C.
template <class T>
void Gemm<T>::splitRows() {
    const int half = runFirstHalf(&Gemm::m);
    a = at(a, lda, 0, half);
    c = at(c, ldc, half, 0);
}
template <class T>
int Gemm<T>::runFirstHalf(int Gemm::*size) {
    const int half = this->*size / 2;
    Gemm first = *this;
    first.*size = half;
    first.run();
    this->*size -= half;
    return half;
}

LUMO_INSTANTIATE_MEMBERS(Gemm)
LUMO_EXPORT_S_D_C_Z(gemm, Gemm)

}  // namespace lumo
