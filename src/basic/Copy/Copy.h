// Copies of matrices, vectors and single elements in device memory, between real and complex too.
#pragma once

#include "common/complex.h"

namespace lumo {

// B := A, both m x n. An empty matrix launches nothing.
template <class T>
void copyMatrix(int m, int n, const T* a, int lda, T* b, int ldb);

// y := x, n elements. Nothing unless n > 0, incx >= 1 and incy >= 1; so in the next two.
template <class T>
void copyVector(int n, const T* x, int incx, T* y, int incy);

// x := y, imaginary parts 0: the complex vector comes first, as in the next.
template <class R>
void copyVectorRealToComplex(int n, Complex<R>* x, int incx, const R* y, int incy);

// y := real parts of x.
template <class R>
void copyVectorComplexToReal(int n, const Complex<R>* x, int incx, R* y, int incy);

// *y := *x.
template <class T>
void copyElement(const T* x, T* y);
template <class R>
void copyElementRealToComplex(const R* x, Complex<R>* y);
template <class R>
void copyElementComplexToReal(const Complex<R>* x, R* y);

}  // namespace lumo
