// Values of tridiagonal and bidiagonal matrices without vectors, found by the device. Everything
// here is on the host; what travels is 2 numbers a row, and the values.
#pragma once

namespace lumo {

// Eigenvalues number first to first + count - 1, from the least, which is number 0, of the real
// symmetric tridiagonal matrix with the finite diagonal d (n) and off-diagonals e (n - 1), as
// xSTEBZ finds them: by bisection. They ascend, and each is as accurate as trd/bisection says.
// Device memory: 2 n + count reals.
template <class R>
void stebz(int n, const R* d, const R* e, int first, int count, R* values);

// d := the singular values, descending, to high relative accuracy, of the real bidiagonal matrix
// with the finite diagonal d (n >= 1) and off-diagonals e (n - 1); e := 0. Returns false, d and e
// as they were, if elements are so far apart that squares would leave the range, or a singular
// value is zero, or so much smaller than the others that it would have no room for its digits.
template <class R>
bool bidiagonalStebz(int n, R* d, R* e);

}  // namespace lumo
