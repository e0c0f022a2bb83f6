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
decltype(sgeqrf_) sgelqf_, dgelqf_, cgelqf_, zgelqf_;
decltype(sgeqrf_) sgerqf_, dgerqf_, cgerqf_, zgerqf_;
void slarft_(const char* direct, const char* storev, const int* n, const int* k, const void* v,
             const int* ldv, const void* tau, void* t, const int* ldt, std::size_t, std::size_t);
decltype(slarft_) dlarft_, clarft_, zlarft_;
}

namespace lumo::cpu {

// Columns that an array has beyond the matrix that a routine works on by rows: gemv of a CPU BLAS
// may read, and not use, what lies behind a row's last element.
constexpr int spareColumns = 1;

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

// A routine of xGEQRF's arguments, with the workspace it asks for, but at least `least` elements.
template <class T>
void factorize(decltype(sgeqrf_)* routine, int least, int m, int n, T* a, int lda, T* tau) {
    int info = 0, size = -1;
    T best(0);
    routine(&m, &n, a, &lda, tau, &best, &size, &info);
    checkReturnedInfo(info);
    if constexpr (isComplex<T>)
        size = int(best.re);
    else
        size = int(best);
    size = std::max({1, size, least});
    std::vector<T> work(std::size_t(size), T(0));
    routine(&m, &n, a, &lda, tau, work.data(), &size, &info);
    checkReturnedInfo(info);
}

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    factorize(select<T>(sgeqrf_, dgeqrf_, cgeqrf_, zgeqrf_), n, m, n, a, lda, tau);
}
template <class T>
void gelqf(int m, int n, T* a, int lda, T* tau) {
    factorize(select<T>(sgelqf_, dgelqf_, cgelqf_, zgelqf_), m, m, n, a, lda, tau);
}
template <class T>
void gerqf(int m, int n, T* a, int lda, T* tau) {
    factorize(select<T>(sgerqf_, dgerqf_, cgerqf_, zgerqf_), m, m, n, a, lda, tau);
}

// xLARFT: the triangular factor of a block of k reflectors of order n.
template <class T>
void larft(char direct, char storev, int n, int k, const T* v, int ldv, const T* tau, T* t,
           int ldt) {
    select<T>(slarft_, dlarft_, clarft_, zlarft_)(&direct, &storev, &n, &k, v, &ldv, tau, t, &ldt,
                                                  1, 1);
}

}  // namespace lumo::cpu
