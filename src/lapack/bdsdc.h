// Singular values and vectors of a bidiagonal matrix by divide and conquer (LAPACK xBDSDC).
#pragma once

namespace lumo {

// B = U diag(d) V^T for the real upper bidiagonal matrix of order n with the diagonal d and the
// n - 1 off-diagonals e, both in host memory; U and V are n x n device matrices. d becomes the
// singular values, descending; e is destroyed. Arguments are the caller's to check.
//
// Data errors, after which U and V are undefined:
//   - the CPU's iteration fails to find the singular values of a block: info is (n + 1) times its
//     first row plus its last one, from 1;
//   - d or e holds a NaN or an infinity: d becomes NaN; info is n.
//
// As stedc: blocks are the CPU's; two neighbours and the row between them become one (Gu and
// Eisenstat, SIAM J. Matrix Anal. Appl. 16, 1995), all of a level together. Small values are
// accurate beside the largest one. Device memory: 2 n^2 + 8 n reals, and lists.
template <class R>
void bdsdc(int n, R* d, R* e, R* u, int ldu, R* v, int ldv);

}  // namespace lumo
