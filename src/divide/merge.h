// What the host tells the kernels of divide and conquer about the merges of a level.
#pragma once

namespace lumo {

// Two neighbouring blocks of a tridiagonal matrix, diag(d) + rho z z^T in their vectors, become
// one. Its rows and columns of the matrix of vectors are first, ..., first + order - 1; so lie its
// parts of the arrays that all merges share. `kept` columns have not been deflated.
template <class R>
struct Merge {
    int first, order, kept;
    int rotationsFrom, rotations;  // in the list of all
    R rho;
};

// f(merge) for all merges, summed: what a description of a kernel's cost counts.
template <class R, class F>
double sumOverMerges(int count, const Merge<R>* merges, F f) {
    double sum = 0;
    for (int k = 0; k < count; ++k) sum += f(merges[k]);
    return sum;
}

// x := c x + s y, y := c y - s x for two columns.
template <class R>
struct ColumnRotation {
    int x, y;
    R c, s;
};

// Rows begin, ..., end - 1 of a column go to another matrix's.
struct ColumnMove {
    int from, to, begin, end;
};

}  // namespace lumo
