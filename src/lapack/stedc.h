// Eigenvalues and eigenvectors of a symmetric tridiagonal matrix by divide and conquer (LAPACK
// xSTEDC).
#pragma once

namespace lumo {

// T = Q diag(d) Q^T for the real symmetric tridiagonal matrix of order n with the diagonal d and
// the n - 1 off-diagonals e, both in host memory; Q is an n x n device matrix. d becomes the
// eigenvalues, ascending; e is destroyed. Arguments are the caller's to check.
//
// Data errors, after which Q is undefined:
//   - the CPU's iteration fails to find the eigenvalues of a block: info is (n + 1) times its first
//     row plus its last one, from 1;
//   - d or e holds a NaN or an infinity: d becomes NaN; info is n.
//
// Blocks are the CPU's. From there on two neighbours become one (Gu and Eisenstat, SIAM J. Matrix
// Anal. Appl. 16, 1995), all of a level together: the host decides what is deflated; the device
// solves the secular equations, makes their vectors, and multiplies by them. Numbers alone, some n
// a level, travel. Device memory: 2 n^2 + 8 n reals, and lists.
template <class R>
void stedc(int n, R* d, R* e, R* q, int ldq);

}  // namespace lumo
