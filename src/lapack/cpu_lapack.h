// The CPU LAPACK: its Fortran routines as overloads on the element type, arguments by value.
#pragma once

#include <memory>

#include "runtime/complex.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* ipiv, int* info);
void dgetrf_(const int* m, const int* n, double* a, const int* lda, int* ipiv, int* info);
void cgetrf_(const int* m, const int* n, lumo::Complex<float>* a, const int* lda, int* ipiv,
             int* info);
void zgetrf_(const int* m, const int* n, lumo::Complex<double>* a, const int* lda, int* ipiv,
             int* info);

void sgebrd_(const int* m, const int* n, float* a, const int* lda, float* d, float* e, float* tauq,
             float* taup, float* work, const int* lwork, int* info);
void dgebrd_(const int* m, const int* n, double* a, const int* lda, double* d, double* e,
             double* tauq, double* taup, double* work, const int* lwork, int* info);
void cgebrd_(const int* m, const int* n, lumo::Complex<float>* a, const int* lda, float* d,
             float* e, lumo::Complex<float>* tauq, lumo::Complex<float>* taup,
             lumo::Complex<float>* work, const int* lwork, int* info);
void zgebrd_(const int* m, const int* n, lumo::Complex<double>* a, const int* lda, double* d,
             double* e, lumo::Complex<double>* tauq, lumo::Complex<double>* taup,
             lumo::Complex<double>* work, const int* lwork, int* info);
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

// xGEBRD with workspace of the size that it asks for. Returns LAPACK's info.
template <class T, class Routine>
int gebrd(Routine routine, int m, int n, T* a, int lda, RealOf<T>* d, RealOf<T>* e, T* tauq,
          T* taup) {
    int info = 0, size = -1;
    T best;
    routine(&m, &n, a, &lda, d, e, tauq, taup, &best, &size, &info);
    if (info != 0) return info;
    if constexpr (isComplex<T>)
        size = int(best.re);
    else
        size = int(best);
    const std::unique_ptr<T[]> work(new T[std::size_t(size)]);
    routine(&m, &n, a, &lda, d, e, tauq, taup, work.get(), &size, &info);
    return info;
}
inline int gebrd(int m, int n, float* a, int lda, float* d, float* e, float* tauq, float* taup) {
    return gebrd(sgebrd_, m, n, a, lda, d, e, tauq, taup);
}
inline int gebrd(int m, int n, double* a, int lda, double* d, double* e, double* tauq,
                 double* taup) {
    return gebrd(dgebrd_, m, n, a, lda, d, e, tauq, taup);
}
inline int gebrd(int m, int n, Complex<float>* a, int lda, float* d, float* e, Complex<float>* tauq,
                 Complex<float>* taup) {
    return gebrd(cgebrd_, m, n, a, lda, d, e, tauq, taup);
}
inline int gebrd(int m, int n, Complex<double>* a, int lda, double* d, double* e,
                 Complex<double>* tauq, Complex<double>* taup) {
    return gebrd(zgebrd_, m, n, a, lda, d, e, tauq, taup);
}

}  // namespace lumo::cpu
