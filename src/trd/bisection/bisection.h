// Eigenvalues of a symmetric tridiagonal matrix by Sturm's counts.
#pragma once

namespace lumo {

// values(k) := eigenvalue number first + k, counted from 0 and from the least, of the matrix of
// order n with the diagonal d, for k < count. squares(i) is the square of the element that couples
// row i to the one before, squares(0) zero. No element exceeds 1. All in device memory.
//
// So many candidates, a power of two, are tried for a value at once: 1 halves the numbers that are
// left of it, 64 leave a 65th of them. A row of the matrix waits for a quotient of the one before,
// so more take no longer as long as the device has lanes that would be idle.
//
// A value is the least number, of those that are zero or not denormal, below or at which more
// eigenvalues are counted than come before it. The count is that of a matrix with the same diagonal
// whose off-diagonal elements are wrong by 5/2 roundings at most (Demmel, Dhillon, Ren, ETNA 3,
// 1995). So beside the norm a value is as good as any method's; and a small one that such changes
// alter by no more than their part, as if there is no diagonal, has all its digits.
constexpr int mostCandidates = 64;
template <class R>
void bisection(int n, const R* d, const R* squares, int first, int count, int candidates,
               R* values);

}  // namespace lumo
