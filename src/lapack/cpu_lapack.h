// The CPU LAPACK's part of an algorithm, as the platform answers for it: templates over the element
// type, arguments by value.
#pragma once

#include <algorithm>
#include <vector>

#include "platform/cuda3.h"
#include "runtime/complex.h"
#include "runtime/exceptions.h"

namespace lumo::cpu {

// The letter of an element type in the names of BLAS and LAPACK.
template <class T>
constexpr char letter = isComplex<T> ? (sizeof(RealOf<T>) == sizeof(double) ? 'Z' : 'C')
                                     : (sizeof(RealOf<T>) == sizeof(double) ? 'D' : 'S');

// xGETRF. Returns LAPACK's info.
template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv) {
    return platform::luPanel(letter<T>, m, n, a, lda, ipiv);
}

// xGESV of a small system. Returns LAPACK's info.
template <class T>
int gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb) {
    return platform::luSystem(letter<T>, n, nrhs, a, lda, ipiv, b, ldb);
}

// Runs a routine twice: to ask for its workspace, and with it, of at least `least` elements.
// routine(work, size) returns LAPACK's info.
template <class T, class Routine>
void withWorkspace(int least, Routine routine) {
    int size = -1;
    T best(0);
    checkReturnedInfo(routine(&best, size));
    if constexpr (isComplex<T>)
        size = int(best.re);
    else
        size = int(best);
    size = std::max({1, size, least});
    std::vector<T> work(std::size_t(size), T(0));
    checkReturnedInfo(routine(work.data(), size));
}

// xGEQRF.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    withWorkspace<T>(n, [&](T* work, int size) {
        return platform::qrTail(letter<T>, m, n, a, lda, tau, work, size);
    });
}

// xGEQRT3: the same for m >= n with the triangular factor T of all n reflectors, whose diagonal
// are their scalar factors. It is recursive: on a panel it takes half the time of xGEQRF and
// xLARFT, which go through it column by column.
template <class T>
void geqrt3(int m, int n, T* a, int lda, T* t, int ldt) {
    checkReturnedInfo(platform::qrPanel(letter<T>, m, n, a, lda, t, ldt));
}

// Columns that an array needs beyond the matrix that gebrd works on: gemv of a CPU BLAS may read,
// and not use, what lies behind the last element of a row.
constexpr int spareColumns = 1;

// xGEBRD.
template <class T>
void gebrd(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup) {
    withWorkspace<T>(std::max(m, n), [&](T* work, int size) {
        return platform::bidiagonalTail(letter<T>, m, n, a, lda, d, e, tauq, taup, work, size);
    });
}

// xGESVD of a small matrix.
template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, RealOf<T>* s, T* u, int ldu, T* vt,
           int ldvt) {
    std::vector<RealOf<T>> rwork(isComplex<T> ? 5 * std::size_t(std::min(m, n)) : 0);
    withWorkspace<T>(1, [&](T* work, int size) {
        return platform::svd(letter<T>, jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt, work, size,
                             rwork.data());
    });
}

}  // namespace lumo::cpu
