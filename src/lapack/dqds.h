// Singular values of a bidiagonal matrix where nobody wants vectors: the differential quotient
// difference algorithm with shifts (LAPACK xLASQ1; Fernando and Parlett, Numer. Math. 67, 1994;
// Parlett and Marques, Linear Algebra Appl. 309, 2000). A step has one division and no square
// root, where the QR iteration has several of each.
#pragma once

#include <cstdint>

namespace lumo {

// d and e, on the host, finite, are the diagonal (n >= 1) and the off-diagonals (n - 1) of a real
// bidiagonal matrix, upper or lower. Puts the singular values in d, descending, to high relative
// accuracy, and zeros in e. Gives up after about `maxSteps` steps: returns false, d and e as they
// were. Takes memory for 5 n numbers of twice the size.
template <class Real>
bool dqds(int n, Real* d, Real* e, std::int64_t maxSteps);

}  // namespace lumo
