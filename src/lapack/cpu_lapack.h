// The CPU LAPACK: its Fortran routines as overloads on the element type, arguments by value.
#pragma once

#include "runtime/complex.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void cgetrf_(const int* m, const int* n, lumo::Complex<float>* a, const int* lda, int* ipiv,
             int* info);
void zgetrf_(const int* m, const int* n, lumo::Complex<double>* a, const int* lda, int* ipiv,
             int* info);
}

namespace lumo::cpu {

// xGETRF. Returns LAPACK's info.
inline int getrf(int m, int n, float* a, int lda, int* ipiv) {
    int info = 0;
    sgetrf_(&m, &n, a, &lda, ipiv, &info);
    return info;
}
inline int getrf(int m, int n, double* a, int lda, int* ipiv) {
    int info = 0;
    dgetrf_(&m, &n, a, &lda, ipiv, &info);
    return info;
}
inline int getrf(int m, int n, Complex<float>* a, int lda, int* ipiv) {
    int info = 0;
    cgetrf_(&m, &n, a, &lda, ipiv, &info);
    return info;
}
inline int getrf(int m, int n, Complex<double>* a, int lda, int* ipiv) {
    int info = 0;
    zgetrf_(&m, &n, a, &lda, ipiv, &info);
    return info;
}

}  // namespace lumo::cpu
