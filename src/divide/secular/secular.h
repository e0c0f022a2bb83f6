// The eigenvalues and vectors of diag(d) + rho z z^T, for all merges of a level.
#pragma once

#include "divide/merge.h"

namespace lumo {

// The arrays of the merges, in device memory: each has its first `kept` of the elements that it has
// there. d ascends and no two are close, no z is small beside the others: deflation saw to it. z is
// of length 1 and rho positive.
template <class R>
struct SecularProblem {
    int count, order;  // merges, and the largest order of one
    const Merge<R>* merges;
    const R *d, *z;
    const int* rows;  // the pole that row i of the vectors is for

    // Root j is origin + offset, the former a d, so that its distance from a pole is known to full
    // accuracy.
    R *origin, *offset, *root;
    R *pole, *weight;  // of row i: d, and a z that the roots are exact for
};

// origin, offset and root.
template <class R>
void secularRoots(const SecularProblem<R>& p);

// pole and weight, by Loewner's formula (Gu and Eisenstat, SIAM J. Matrix Anal. Appl. 15, 1994): of
// a matrix with exactly these eigenvalues the vectors are orthogonal however close the roots are.
template <class R>
void secularWeights(const SecularProblem<R>& p);

// The vectors, of length 1: each merge's in its block of the diagonal of a device matrix.
template <class R>
void secularVectors(const SecularProblem<R>& p, R* s, int lds);

}  // namespace lumo
