// The CPU LAPACK: its Fortran routines as templates over the element type, arguments by value.
#pragma once

#include <algorithm>
#include <vector>

#include "runtime/complex.h"
#include "runtime/exceptions.h"

extern "C" {
void sgetrf_(const int* m, const int* n, void* a, const int* lda, int* ipiv, int* info);
decltype(sgetrf_) dgetrf_, cgetrf_, zgetrf_;
void sgeqrf_(const int* m, const int* n, void* a, const int* lda, void* tau, void* work,
             const int* lwork, int* info);
decltype(sgeqrf_) dgeqrf_, cgeqrf_, zgeqrf_;
void sgeqrt3_(const int* m, const int* n, void* a, const int* lda, void* t, const int* ldt,
              int* info);
decltype(sgeqrt3_) dgeqrt3_, cgeqrt3_, zgeqrt3_;
void sgebrd_(const int* m, const int* n, void* a, const int* lda, void* d, void* e, void* tauq,
             void* taup, void* work, const int* lwork, int* info);
decltype(sgebrd_) dgebrd_, cgebrd_, zgebrd_;
}

namespace lumo::cpu {

// The routine of the element type.
template <class T, class Routine>
Routine* select(Routine* s, Routine* d, Routine* c, Routine* z) {
    constexpr bool wide = sizeof(RealOf<T>) == sizeof(double);
    if constexpr (isComplex<T>)
        return wide ? z : c;
    else
        return wide ? d : s;
}

// xGETRF. Returns LAPACK's info.
template <class T>
int getrf(int m, int n, T* a, int lda, int* ipiv) {
    int info = 0;
    select<T>(sgetrf_, dgetrf_, cgetrf_, zgetrf_)(&m, &n, a, &lda, ipiv, &info);
    return info;
}

// Runs a routine twice: to ask for its workspace, and with it, of at least `least` elements.
// routine(work, &size, &info).
template <class T, class Routine>
void withWorkspace(int least, Routine routine) {
    int info = 0, size = -1;
    T best(0);
    routine(&best, &size, &info);
    checkReturnedInfo(info);
    if constexpr (isComplex<T>)
        size = int(best.re);
    else
        size = int(best);
    size = std::max({1, size, least});
    std::vector<T> work(std::size_t(size), T(0));
    routine(work.data(), &size, &info);
    checkReturnedInfo(info);
}

// xGEQRF.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    withWorkspace<T>(n, [&](T* work, const int* size, int* info) {
        select<T>(sgeqrf_, dgeqrf_, cgeqrf_, zgeqrf_)(&m, &n, a, &lda, tau, work, size, info);
    });
}

// xGEQRT3: the same for m >= n with the triangular factor T of all n reflectors, whose diagonal
// are their scalar factors. It is recursive: on a panel it takes half the time of xGEQRF and
// xLARFT, which go through it column by column.
template <class T>
void geqrt3(int m, int n, T* a, int lda, T* t, int ldt) {
    int info = 0;
    select<T>(sgeqrt3_, dgeqrt3_, cgeqrt3_, zgeqrt3_)(&m, &n, a, &lda, t, &ldt, &info);
    checkReturnedInfo(info);
}

// Columns that an array needs beyond the matrix that gebrd works on: gemv of a CPU BLAS may read,
// and not use, what lies behind the last element of a row.
constexpr int spareColumns = 1;

// xGEBRD.
template <class T>
void gebrd(int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq, T* taup) {
    withWorkspace<T>(std::max(m, n), [&](T* work, const int* size, int* info) {
        select<T>(sgebrd_, dgebrd_, cgebrd_, zgebrd_)(&m, &n, a, &lda, d, e, tauq, taup, work, size,
                                                      info);
    });
}

}  // namespace lumo::cpu
