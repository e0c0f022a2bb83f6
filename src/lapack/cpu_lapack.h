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

// xGEQRF, with the workspace it asks for, but at least n elements.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau) {
    const auto routine = select<T>(sgeqrf_, dgeqrf_, cgeqrf_, zgeqrf_);
    int info = 0, size = -1;
    T best(0);
    routine(&m, &n, a, &lda, tau, &best, &size, &info);
    checkReturnedInfo(info);
    if constexpr (isComplex<T>)
        size = int(best.re);
    else
        size = int(best);
    size = std::max({1, size, n});
    std::vector<T> work(std::size_t(size), T(0));
    routine(&m, &n, a, &lda, tau, work.data(), &size, &info);
    checkReturnedInfo(info);
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

}  // namespace lumo::cpu
